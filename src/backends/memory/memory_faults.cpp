#include "backends/memory/memory_faults.h"

#include "registry/Stringhelper.h"

namespace scrubwell {

namespace {

UnicodeView ShortRoot(RootKey root) {
  switch (root) {
    case RootKey::ClassesRoot:
      return u"HKCR\\";
    case RootKey::CurrentUser:
      return u"HKCU\\";
    case RootKey::LocalMachine:
      return u"HKLM\\";
    case RootKey::Users:
      return u"HKU\\";
    default:
      return u"?\\";
  }
}

}  // namespace

void MemoryJournal::Add(UnicodeView line) {
  lines.push_back(ToUtf8(line));
}

void MemoryFaults::FailNth(std::uint64_t n, Status status) {
  failAt_ = calls_ + n;
  nthStatus_ = status;
}

void MemoryFaults::FailPath(UnicodeView part, Status status) {
  paths_.push_back({UpperCase(part), status});
}

void MemoryFaults::Clear() {
  failAt_ = 0;
  paths_.clear();
}

bool MemoryFaults::Count(Status& status) {
  status = ++calls_ == failAt_ ? nthStatus_ : Status::Ok;
  return status == Status::Ok && !paths_.empty();
}

Status MemoryFaults::Pass(UnicodeView what) {
  Status status;
  if (!Count(status)) return status;
  const UnicodeString upper = UpperCase(what);
  for (const PathFault& fault : paths_)
    if (upper.find(fault.part) != UnicodeString::npos) return fault.status;
  return Status::Ok;
}

Status MemoryFaults::Pass(const KeyRef& key, UnicodeView name) {
  if (paths_.empty()) {
    Status status;
    Count(status);
    return status;
  }
  UnicodeString what(ShortRoot(key.root));
  what += key.path;
  if (!name.empty()) (what += u'\\') += name;
  return Pass(what);
}

}  // namespace scrubwell
