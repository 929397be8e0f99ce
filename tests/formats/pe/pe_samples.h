// A program file with resources, for tests.
#pragma once

#include <map>

#include "formats/pe/pe.h"

namespace scrubwell::pe {

inline void Put16(Bytes& out, std::size_t value) {
  out.push_back(static_cast<std::uint8_t>(value));
  out.push_back(static_cast<std::uint8_t>(value >> 8));
}
inline void Put32(Bytes& out, std::size_t value) {
  Put16(out, value & 0xFFFF);
  Put16(out, value >> 16);
}
inline void Set32(Bytes& out, std::size_t at, std::size_t value) {
  for (std::size_t i = 0; i < 4; ++i) out[at + i] = static_cast<std::uint8_t>(value >> 8 * i);
}
inline void PutText(Bytes& out, UnicodeView text) {
  for (const char16_t unit : text) Put16(out, unit);
}

/// By type, then by number, then by language; data in the last of them.
struct Tree {
  std::map<std::uint32_t, Tree> children = {};
  Bytes data = {};
};

inline constexpr std::uint32_t kAddress = 0x1000;

inline void PutTree(Bytes& out, const Tree& tree) {
  if (tree.children.empty()) {
    Put32(out, kAddress + out.size() + 16);
    for (const std::size_t value : {tree.data.size(), std::size_t{0}, std::size_t{0}})
      Put32(out, value);
    out.insert(out.end(), tree.data.begin(), tree.data.end());
    out.resize((out.size() + 3) / 4 * 4);
    return;
  }
  out.resize(out.size() + 14);
  Put16(out, tree.children.size());
  std::size_t entry = out.size();
  out.resize(entry + tree.children.size() * 8);
  for (const auto& [id, child] : tree.children) {
    Set32(out, entry, id);
    Set32(out, entry + 4, out.size() | (child.children.empty() ? 0U : 0x80000000U));
    PutTree(out, child);
    entry += 8;
  }
}

inline Bytes BuildFile(const Tree& tree, bool wide) {
  Bytes resources;
  PutTree(resources, tree);
  const std::size_t optionalSize = (wide ? 112 : 96) + 16 * 8;
  Bytes out(0x40);
  out[0] = 'M', out[1] = 'Z', out[0x3C] = 0x40;
  PutText(out, u"\x4550");
  Put16(out, 0);
  Put16(out, wide ? MachineAmd64 : MachineI386);
  Put16(out, 1);
  out.resize(out.size() + 12);
  Put16(out, optionalSize);
  Put16(out, 0x2102);
  const std::size_t optional = out.size();
  out.resize(optional + optionalSize);
  out[optional] = 0x0B, out[optional + 1] = wide ? 2 : 1;
  Set32(out, optional + 32, 0x1000);
  Set32(out, optional + optionalSize - 16 * 8 - 4, 16);
  Set32(out, optional + optionalSize - 14 * 8, kAddress);
  out.resize(out.size() + 8);
  for (const std::size_t value : {resources.size(), std::size_t{kAddress}, resources.size()}) {
    Put32(out, value);
  }
  Put32(out, 0x410);  // the loader takes it down to 0x400
  out.resize(0x400);
  out.insert(out.end(), resources.begin(), resources.end());
  return out;
}

/// A block of the string table with one text at this place of its 16.
inline Bytes Strings(std::uint32_t place, UnicodeView text) {
  Bytes out(place * 2);
  Put16(out, text.size());
  PutText(out, text);
  for (std::uint32_t i = place + 1; i < 16; ++i) Put16(out, 0);
  return out;
}

inline Bytes Node(UnicodeView name, bool isText, std::size_t valueLength, const Bytes& value,
                  std::initializer_list<Bytes> children = {}) {
  Bytes out(2);
  Put16(out, valueLength);
  Put16(out, isText ? 1 : 0);
  PutText(out, name);
  Put16(out, 0);
  const auto append = [&out](const Bytes& more) {
    out.resize((out.size() + 3) / 4 * 4);
    out.insert(out.end(), more.begin(), more.end());
  };
  append(value);
  for (const Bytes& child : children) append(child);
  out[0] = static_cast<std::uint8_t>(out.size());
  out[1] = static_cast<std::uint8_t>(out.size() >> 8);
  return out;
}

inline Bytes Utf16(UnicodeView text) {
  Bytes out;
  PutText(out, text);
  Put16(out, 0);
  return out;
}

inline Bytes VersionBlock() {
  Bytes fixed(52);
  Set32(fixed, 0, 0xFEEF04BD);
  Set32(fixed, 8, 0x000B0001);
  Set32(fixed, 12, 0x157C0002);
  const Bytes english =
      Node(u"040904B0", true, 0, {},
           {Node(u"CompanyName", true, 5, Utf16(u"Acme")), Node(u"Odd", true, 8, Utf16(u"abc"))});
  const Bytes german =
      Node(u"040704b0", true, 0, {}, {Node(u"CompanyName", true, 7, Utf16(u"Firma\xDF"))});
  return Node(u"VS_VERSION_INFO", false, 52, fixed,
              {Node(u"StringFileInfo", true, 0, {}, {german, english}),
               Node(u"VarFileInfo", true, 0, {},
                    {Node(u"Translation", false, 4, {0x09, 0x04, 0xB0, 0x04})})});
}

inline Tree SampleTree() {
  Tree tree;
  const auto put = [&tree](std::uint32_t type, std::uint32_t number, LangId language, Bytes data) {
    tree.children[type].children[number].children[language].data = std::move(data);
  };
  put(ResourceString, 1, 0x0409, Strings(5, u"five"));
  put(ResourceString, 1, 0x0407, Strings(5, u"f\xFCnf"));
  put(ResourceString, 1, 0x0807, Strings(5, u"foif"));
  put(ResourceString, 7, 0x0409, Strings(15, u"last"));
  put(ResourceString, 7, 0x0807, Strings(3, u"drei"));
  put(ResourceString, 9, 0x0411, Strings(0, u"\u65E5"));
  put(ResourceVersion, 1, 0x0409, VersionBlock());
  return tree;
}

}  // namespace scrubwell::pe
