# Completion of vlx for bash: commands, options and choices as --help shows them, and the setting
# keys with their values behind --set.

_vlx_offer() { # the candidates of a word list that begin with the word
  mapfile -t COMPREPLY < <(compgen -W "$1" -- "$2")
}

_vlx_set() { # KEY=VALUE; bash has split the word at the equals sign
  local vlx=$1 word=$2
  if [[ $word != *=* ]]; then
    _vlx_offer "$("$vlx" settings keys 2>/dev/null | cut -f1 | sed 's/$/=/')" "$word"
    compopt -o nospace 2>/dev/null
    return
  fi
  local values
  values=$("$vlx" settings keys 2>/dev/null |
    awk -F '\t' -v key="${word%%=*}" '$1 == key && $2 !~ /^</ { print $2 }')
  _vlx_offer "$values" "${word#*=}"
}

_vlx() {
  COMPREPLY=()
  local vlx=$1 help word words=() chain=()
  read -ra words <<<"${COMP_LINE:0:COMP_POINT}"
  [[ ${COMP_LINE:0:COMP_POINT} == *[[:space:]] ]] && words+=("")
  local current=${words[-1]} previous=${words[-2]:-}

  help=$("$vlx" --help 2>/dev/null)
  for word in "${words[@]:1:${#words[@]}-2}"; do
    [[ $word =~ ^[a-z]+$ ]] || continue
    grep -q "^  $word  " <<<"$(sed -n '/^Subcommands:/,$p' <<<"$help")" || continue
    chain+=("$word")
    help=$("$vlx" "${chain[@]}" --help 2>/dev/null)
  done

  if [[ $previous == --set ]]; then
    _vlx_set "$vlx" "$current"
  elif [[ $current == --set=* ]]; then
    _vlx_set "$vlx" "${current#--set=}"
  elif [[ $previous == -* ]] && word=$(sed -n "s/^  \(-.,\)\?$previous .*{\([^}]*\)}.*/\2/p" <<<"$help") &&
    [[ -n $word ]]; then
    _vlx_offer "${word//,/ }" "$current"
  elif [[ $current == -* ]]; then
    _vlx_offer "$(grep -oE '^  (-[a-zA-Z],)?--[a-z0-9-]+' <<<"$help" | tr , '\n')" "$current"
  else
    _vlx_offer "$(sed -n '/^Subcommands:/,/^$/s/^  \([a-z]*\) .*/\1/p' <<<"$help")" "$current"
  fi
}

# Where there is nothing of ours to offer, files are offered.
complete -o default -F _vlx vlx
