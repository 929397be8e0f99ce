// Any bytes are an INI file, come back as they were, and keep what is written into them.
#include <cstdlib>

#include "formats/ini/ini.h"
#include "require.h"

namespace {

using namespace scrubwell;

ini::Codec Latin1() {
  return {[](std::string_view bytes) {
            UnicodeString out;
            for (const char byte : bytes) out.push_back(static_cast<unsigned char>(byte));
            return out;
          },
          [](UnicodeView text) { return std::string(text.begin(), text.end()); }};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Bytes file(data, data + size);
  ini::Document document;
  if (document.Parse(file, Latin1()) != Status::Ok) return 0;
  Require(document.Bytes() == file);
  TStringList names;
  (void)document.Entries(u"a", names);
  UnicodeString value;
  for (const UnicodeString& name : names) Require(document.Get(u"a", name, value) == Status::Ok);
  Require(document.Set(u"a", u"k", u"new") == Status::Ok);
  Require(document.Get(u"A", u"K", value) == Status::Ok && value == u"new");
  while (document.Remove(u"a", u"k") == Status::Ok) continue;
  for (const UnicodeString& name : names) {
    const bool removed = name == u"k" || name == u"K";
    Require((document.Get(u"a", name, value) == Status::Ok) != removed);
  }
  return 0;
}
