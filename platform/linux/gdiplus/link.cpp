#include "platform/linux/gdiplus/link.h"

namespace Gdiplus {

namespace {

Link ReadLink(const toml::table& file) {
  constexpr std::pair<const char*, Link> kNames[] = {
      {"network", Link::Network}, {"usb", Link::Usb},         {"wifi", Link::Usb},
      {"serial", Link::Serial},   {"default", Link::Network}, {"fast", Link::Network},
      {"small", Link::Serial}};  // the last three are old names
  const toml::node* node = file.get("png");
  if (node == nullptr) return Link::Network;
  const auto text = node->value<std::string>();
  for (const auto& [name, link] : kNames) {
    if (text == name) return link;
  }
  FailAt(*node, "png must be \"network\", \"usb\", \"wifi\" or \"serial\"");
}

}  // namespace

SystemPart<Link>& PrinterLink() {
  static SystemPart<Link> part(Link::Network, ReadLink);
  return part;
}

}  // namespace Gdiplus
