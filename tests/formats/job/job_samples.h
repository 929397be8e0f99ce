// A scheduled task for tests.
#pragma once

#include "formats/job/job.h"

namespace scrubwell::job {

inline void Put16(Bytes& out, std::size_t value) {
  out.push_back(static_cast<std::uint8_t>(value));
  out.push_back(static_cast<std::uint8_t>(value >> 8));
}

inline void PutText(Bytes& out, UnicodeView text) {
  Put16(out, text.empty() ? 0 : text.size() + 1);
  for (const char16_t unit : text) Put16(out, unit);
  if (!text.empty()) Put16(out, 0);
}

inline Bytes BuildJob() {
  Bytes out(68);
  out[2] = 1;
  out[20] = 70;
  out[40] = 5;
  out[45] = 0x13, out[46] = 4;
  out[48] = 0x04, out[49] = 0x02;
  Put16(out, 0);
  for (const UnicodeView text : {u"C:\\\u0416.exe", u"/q", u"", u"\xD800", u"c"}) {
    PutText(out, text);
  }
  Put16(out, 0);
  Put16(out, 0);
  out[22] = static_cast<std::uint8_t>(out.size());
  Put16(out, 2);
  out.resize(out.size() + 2 * 48);
  return out;
}

}  // namespace scrubwell::job
