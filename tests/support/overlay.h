// A plan on top of a Windows in memory.
#pragma once

#include "backends/common/overlay_registry.h"
#include "backends/common/overlay_services.h"
#include "backends/memory/memory_backend.h"

namespace scrubwell::test {

/// What the plan holds, in its order.
class PlanList final : public IPlan {
 public:
  Status Add(PlannedChange change) override {
    if (answer == Status::Ok) changes.push_back(std::move(change));
    return answer;
  }
  std::vector<PlannedChange> changes;
  Status answer = Status::Ok;
};

/// The places of a registry made of hives.
class MemoryPlaces final : public IPhysicalKeys {
 public:
  explicit MemoryPlaces(MemoryBackend& backend) : backend_(backend) {}

  Status PlaceOf(const KeyRef& key, bool /*asLink*/, UnicodeString& place) override {
    std::vector<PhysicalKey> found;
    const Status status = backend_.Registry().Locate(key, found);
    if (status == Status::Ok && !found.empty()) {
      place = found[0].mount;
      if (!found[0].path.empty()) place += u"\\" + found[0].path;
      return Status::Ok;
    }
    const std::size_t slash = key.path.rfind(u'\\');
    if (status != Status::Absent && status != Status::Ok) return status;
    if (key.path.empty()) return Status::Unknown;
    const bool isFirst = slash == UnicodeView::npos;
    const Status above = PlaceOf(
        {key.root, isFirst ? UnicodeView() : key.path.substr(0, slash), key.view}, false, place);
    place += u"\\" + UnicodeString(isFirst ? key.path : key.path.substr(slash + 1));
    return above;
  }

  Status TreeOf(UnicodeView place, std::vector<KeyImage>& out) override {
    out.clear();
    HivePlaceOfPlace(place);
    IHive::Key key = IHive::NoKey;
    Status status = hive_->Root(key);
    for (std::size_t from = 0; status == Status::Ok && from < path_.size();) {
      const std::size_t to = std::min(path_.find(u'\\', from), path_.size());
      status = hive_->Child(key, path_.substr(from, to - from), key);
      from = to + 1;
    }
    if (status == Status::Ok) Take(key, path_.substr(path_.rfind(u'\\') + 1), 0, out);
    return status;
  }

  Status MayDelete(UnicodeView place) override {
    HivePlaceOfPlace(place);
    const bool isUser = mount_.starts_with(u"HKU");
    const UnicodeString path = UnicodeString(place.substr(place.find(u'\\') + 1));
    const RootKey root = isUser ? RootKey::Users : RootKey::LocalMachine;
    return MayDelete(root, path);
  }

 private:
  Status MayDelete(RootKey root, const UnicodeString& path) {
    const KeyRef key{root, path, View::Bits64};
    Status status = backend_.Registry().CheckAccess(key, Access::Delete);
    TStringList names;
    if (status == Status::Ok) status = backend_.Registry().EnumKeys(key, names);
    for (const UnicodeString& name : names) {
      if (status == Status::Ok) status = MayDelete(root, path + u'\\' + name);
    }
    return status;
  }
  // "HKLM\SOFTWARE\x" is hive and path.
  void HivePlaceOfPlace(UnicodeView place) {
    const std::size_t slash = std::min(place.find(u'\\', place.find(u'\\') + 1), place.size());
    mount_ = place.substr(0, slash);
    path_ = place.substr(std::min(slash + 1, place.size()));
    hive_ = &backend_.Hive(mount_);
  }
  void Take(IHive::Key key, UnicodeView name, std::uint32_t level, std::vector<KeyImage>& out) {
    KeyImage& image = out.emplace_back();
    image.level = level;
    image.name = name;
    hive_->Values(key, image.values);
    std::vector<IHive::Subkey> subkeys;
    hive_->Subkeys(key, subkeys);
    for (const IHive::Subkey& subkey : subkeys) Take(subkey.key, subkey.name, level + 1, out);
  }

  MemoryBackend& backend_;
  UnicodeString mount_;
  UnicodeString path_;
  MemoryHive* hive_ = nullptr;
};

struct OverlayOfMemory {
  explicit OverlayOfMemory(MemoryBackend& base)
      : places(base),
        registry(base.Registry(), places, plan),
        files(base.Files(), plan,
              [](UnicodeView path, FsView view) {
                UnicodeString physical(path);
                constexpr UnicodeView kShown = u"C:\\Windows\\System32\\";
                if (view == FsView::Redirected && physical.starts_with(kShown))
                  physical.replace(0, kShown.size(), u"C:\\Windows\\SysWOW64\\");
                return physical;
              }),
        profiles(base.World().profiles, files, registry, base.World().text, u"C:\\Windows"),
        tasks(base.World().tasks, plan),
        firewall(base.World().firewall, plan),
        browser(base.World().browser, plan) {}

  PlanList plan;
  MemoryPlaces places;
  OverlayRegistry registry;
  OverlayFiles files;
  OverlayProfiles profiles;
  OverlayTasks tasks;
  OverlayFirewall firewall;
  OverlayBrowser browser;
};

}  // namespace scrubwell::test
