#include "backends/common/access_check.h"

#include <algorithm>

#include "registry/Stringhelper.h"

namespace scrubwell {

namespace {

using Span = std::span<const std::uint8_t>;

constexpr std::uint16_t kDaclPresent = 0x0004;
constexpr std::uint8_t kAllowed = 0;
constexpr std::uint8_t kDenied = 1;
constexpr std::uint8_t kInheritOnly = 0x08;
constexpr std::size_t kMaxSubAuthorities = 15;
constexpr std::size_t kSidHead = 8;

// Everyone, interactive users, authenticated users, the administrators and the users.
constexpr UnicodeView kGroups[] = {u"S-1-1-0", u"S-1-5-4", u"S-1-5-11", u"S-1-5-32-544",
                                   u"S-1-5-32-545"};

struct GenericRight {
  std::uint32_t generic;
  std::uint32_t specific;
};
constexpr GenericRight kGeneric[] = {{0x80000000U, 0x00020019U},  // read
                                     {0x40000000U, 0x00020006U},  // write
                                     {0x20000000U, 0x00020019U},  // execute
                                     {0x10000000U, kKeyAllAccess}};

std::uint32_t Number(Span data, std::size_t at, std::size_t size) {
  std::uint32_t value = 0;
  for (std::size_t i = size; i-- > 0;) value = value << 8U | data[at + i];
  return value;
}

void Append(Bytes& out, std::uint32_t value, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) out.push_back(static_cast<std::uint8_t>(value >> 8 * i));
}

// The SID at an offset, empty when it does not fit.
Span SidAt(Span data, std::size_t at) {
  if (at > data.size() || data.size() - at < kSidHead) return {};
  const std::size_t count = data[at + 1];
  if (data[at] != 1 || count > kMaxSubAuthorities || data.size() - at < kSidHead + 4 * count)
    return {};
  return data.subspan(at, kSidHead + 4 * count);
}

std::uint32_t Specific(std::uint32_t mask) {
  for (const GenericRight& right : kGeneric)
    if ((mask & right.generic) != 0) mask |= right.specific;
  return mask;
}

struct Token {
  std::vector<Bytes> sids;

  explicit Token(UnicodeView user) {
    for (const UnicodeView group : kGroups) sids.push_back(SidFromText(group));
    Bytes own = SidFromText(user);
    if (!own.empty()) sids.push_back(std::move(own));
  }
  [[nodiscard]] bool Holds(Span sid) const {
    return std::any_of(sids.begin(), sids.end(),
                       [&](const Bytes& own) { return std::ranges::equal(own, sid); });
  }
};

// The entries decide in order: each right by the first entry that names it.
Status CheckList(Span list, const Token& token, std::uint32_t wanted) {
  const std::size_t count = Number(list, 4, 2);
  std::size_t at = 8;
  for (std::size_t i = 0; i < count && wanted != 0; ++i) {
    if (list.size() - at < 8) return Status::Unknown;
    const std::size_t size = Number(list, at + 2, 2);
    if (size < 8 || size > list.size() - at) return Status::Unknown;
    const std::uint8_t type = list[at];
    if ((type == kAllowed || type == kDenied) && (list[at + 1] & kInheritOnly) == 0) {
      const Span sid = SidAt(list.subspan(at, size), 8);
      if (sid.empty()) return Status::Unknown;
      const std::uint32_t mask = Specific(Number(list, at + 4, 4));
      if (token.Holds(sid)) {
        if (type == kDenied && (mask & wanted) != 0) return Status::Denied;
        if (type == kAllowed) wanted &= ~mask;
      }
    }
    at += size;
  }
  return wanted == 0 ? Status::Ok : Status::Denied;
}

}  // namespace

Status CheckDescriptor(Span descriptor, UnicodeView userSid, std::uint32_t rights) {
  if (descriptor.empty()) return Status::Ok;
  if (descriptor.size() < 20 || descriptor[0] != 1) return Status::Unknown;
  const std::uint32_t offset = Number(descriptor, 16, 4);
  if ((Number(descriptor, 2, 2) & kDaclPresent) == 0 || offset == 0) return Status::Ok;
  if (offset > descriptor.size() || descriptor.size() - offset < 8) return Status::Unknown;
  const std::size_t size = Number(descriptor, offset + 2, 2);
  if (size < 8 || size > descriptor.size() - offset) return Status::Unknown;
  // The owner's standing rights are to read and to change the list itself; neither is asked for.
  return CheckList(descriptor.subspan(offset, size), Token(userSid), Specific(rights));
}

Status CheckDescriptor(Span descriptor, UnicodeView userSid, Access access) {
  return CheckDescriptor(
      descriptor, userSid,
      access == Access::Delete ? kRightDelete : kRightSetValue | kRightCreateSubKey);
}

Bytes SidFromText(UnicodeView text) {
  std::vector<std::uint64_t> numbers;
  if (text.size() < 2 || UpCase(text[0]) != u'S' || text[1] != u'-') return {};
  for (std::size_t at = 2; at <= text.size();) {
    const std::size_t end = std::min(text.find(u'-', at), text.size());
    if (end == at || end - at > 15) return {};
    std::uint64_t number = 0;
    for (; at < end; ++at) {
      if (text[at] < u'0' || text[at] > u'9') return {};
      number = number * 10 + (text[at] - u'0');
    }
    numbers.push_back(number);
    at = end + 1;
  }
  if (numbers.size() < 2 || numbers.size() > 2 + kMaxSubAuthorities || numbers[0] != 1) return {};
  Bytes sid{1, static_cast<std::uint8_t>(numbers.size() - 2)};
  for (int shift = 40; shift >= 0; shift -= 8)
    sid.push_back(static_cast<std::uint8_t>(numbers[1] >> shift));
  for (std::size_t i = 2; i < numbers.size(); ++i) {
    if (numbers[i] > 0xFFFFFFFFU) return {};
    Append(sid, static_cast<std::uint32_t>(numbers[i]), 4);
  }
  return sid;
}

Bytes BuildDescriptor(UnicodeView ownerSid, std::span<const AccessEntry> entries) {
  Bytes list;
  for (const AccessEntry& entry : entries) {
    const Bytes sid = SidFromText(entry.sid);
    list.push_back(entry.allow ? kAllowed : kDenied);
    list.push_back(entry.flags);
    Append(list, static_cast<std::uint32_t>(8 + sid.size()), 2);
    Append(list, entry.mask, 4);
    list.insert(list.end(), sid.begin(), sid.end());
  }
  const Bytes owner = SidFromText(ownerSid);
  Bytes out{1, 0};
  Append(out, 0x8000U | kDaclPresent, 2);
  Append(out, 20, 4);  // owner
  Append(out, 0, 4);   // group
  Append(out, 0, 4);   // audit list
  Append(out, static_cast<std::uint32_t>(20 + owner.size()), 4);
  out.insert(out.end(), owner.begin(), owner.end());
  Append(out, 2, 2);
  Append(out, static_cast<std::uint32_t>(8 + list.size()), 2);
  Append(out, static_cast<std::uint32_t>(entries.size()), 4);
  out.insert(out.end(), list.begin(), list.end());
  return out;
}

}  // namespace scrubwell
