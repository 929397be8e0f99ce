#include "hosts/report/image_catalogue.h"

#include <algorithm>

#include "registry/Stringhelper.h"
#include "registry/Zmgraphics.h"

namespace scrubwell::hosts {

namespace {

constexpr UnicodeView kExtension = u".svg";

const Icon* FindNumber(int number) {
  const std::span<const Icon> icons = AllIcons();
  const auto icon = std::ranges::lower_bound(icons, number, {}, &Icon::number);
  return icon != icons.end() && icon->number == number ? &*icon : nullptr;
}

}  // namespace

const Icon* FindIcon(UnicodeView fileName) {
  if (!fileName.ends_with(kExtension)) return nullptr;
  const UnicodeView digits = fileName.substr(0, fileName.size() - kExtension.size());
  if (digits.empty() || digits.size() > 6) return nullptr;
  int number = 0;
  for (const char16_t digit : digits) {
    if (digit < u'0' || digit > u'9') return nullptr;
    number = number * 10 + (digit - u'0');
  }
  return FindNumber(number);
}

UnicodeString ImageCatalogue::FileName(int id, int category) {
  if (category != PluginGraphics || FindNumber(id) == nullptr) return {};
  return IntToStr(id).append(kExtension);
}

TPlatform WithImages(const TPlatform& platform, IImages& images) {
  return {platform.registry, platform.files,     platform.system,   platform.text,
          platform.shell,    platform.resources, platform.profiles, platform.services,
          platform.tasks,    platform.firewall,  platform.browser,  images,
          platform.notes,    platform.product};
}

}  // namespace scrubwell::hosts
