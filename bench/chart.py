"""Draws the chart at the top of docs/performance.md: the time of a page by stage, as an SVG file."""

from html import escape

STAGES = [("turn", "#4c78a8", "capture, turn"), ("dots", "#f2a541", "black and white"), ("png", "#5b9a68", "PNG file"),
          ("rest", "#b5b5b5", "all in one pass")]
WIDTH = 860
LEFT = 110  # of the bars
BARS = 560  # their most
BAR = 26
GAP = 10


def _text(x, y, text, size=14, anchor="start", weight="normal"):
    return f'<text x="{x}" y="{y}" font-size="{size}" text-anchor="{anchor}" font-weight="{weight}">{escape(text)}</text>'


def _bar(y, name, stages, clip_ms, ours_ms):
    """One program's bar. One longer than clip_ms is cut and ends in a notch."""
    total = sum(stages.values())
    parts = [_text(LEFT - 10, y + BAR - 8, name, anchor="end")]
    at = 0.0
    for key, color, _ in STAGES:
        length = min(stages.get(key, 0.0), clip_ms - at)
        if length > 0:
            parts.append(f'<rect x="{LEFT + at / clip_ms * BARS:.1f}" y="{y}" width="{length / clip_ms * BARS:.1f}" '
                         f'height="{BAR}" fill="{color}"/>')
            at += length
    end = LEFT + at / clip_ms * BARS
    if total > clip_ms:
        parts.append(f'<path d="M{end - 24:.1f} {y} l8 0 l-6 {BAR} l-8 0 z" fill="white"/>')
    label = f"{total:.1f} ms" + (f", {total / ours_ms:.0f} times" if total != ours_ms else "")
    parts.append(_text(round(end + 8, 1), y + BAR - 8, label))
    return parts


def draw(panels):
    """SVG text. panels: (title, [(program, {stage: ms})]), ours first."""
    body = []
    y = 20
    for _, color, name in STAGES:
        x = LEFT + 165 * [stage[2] for stage in STAGES].index(name)
        body += [f'<rect x="{x}" y="{y}" width="14" height="14" fill="{color}"/>', _text(x + 20, y + 12, name)]
    y += 46
    for title, rows in panels:
        body.append(_text(LEFT, y, title, 16, weight="bold"))
        y += 14
        ours_ms = sum(rows[0][1].values())
        clip_ms = 1.1 * sum(rows[1][1].values())
        for name, stages in rows:
            body += _bar(y, name, stages, clip_ms, ours_ms)
            y += BAR + GAP
        y += 26
    head = (f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{y}" viewBox="0 0 {WIDTH} {y}" '
            'font-family="sans-serif" fill="#222">')
    return "\n".join([head, f'<rect width="{WIDTH}" height="{y}" fill="white"/>', *body, "</svg>", ""])
