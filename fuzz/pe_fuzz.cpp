// No program file makes a resource reader leave its bytes.
#include "formats/pe/pe.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  namespace pe = scrubwell::pe;
  pe::Image image;
  if (image.Open({data, size}) != scrubwell::Status::Ok) return 0;
  constexpr pe::LangId kLanguages[] = {0x0407, 0x0C07};
  scrubwell::UnicodeString text;
  pe::Version version;
  std::vector<pe::LangId> languages;
  for (const std::uint32_t id : {5U, 111U, 128U}) (void)image.String(id, kLanguages, text);
  (void)image.FileVersion(version);
  (void)image.VersionText(u"Odd", kLanguages, text);
  (void)image.Languages(pe::ResourceString, languages);
  return 0;
}
