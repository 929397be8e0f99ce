#include "plugins/system/Rcp_firewall.h"

#include "registry/Stringhelper.h"
#include "texts/firewall.h"

namespace scrubwell {
namespace {

namespace text = texts::firewall;

enum Kind : std::int32_t { kMissingApplication = 1 };

constexpr TCategory kCategory{
    .className = u"TRCPFirewall",
    .imageIndex = 17,
    .iconID = 10001,
    .caption = text::kCaption,
    .shortDescription = text::kShortDescription,
    .description = text::kDescription,
};

constexpr std::array<TProblemKind, 1> kKinds{{
    {kMissingApplication, 10000, text::kMissingCaption, text::kMissingShort, text::kMissingDetail},
}};

constexpr UnicodeView kService = u"MpsSvc";
constexpr UnicodeView kServiceBeforeVista = u"SharedAccess";
constexpr UnicodeView kSystem = u"System";  // the system itself, which has no program file
constexpr std::uint32_t kRunning = 4;
constexpr std::int32_t kWeightPerItem = 12;

}  // namespace

TRCPFirewall::TRCPFirewall() : TRCPlugin(kCategory, kKinds) {
  InitFirewallInterface();
}

void TRCPFirewall::InitFirewallInterface() {
  const UnicodeView service = CurrentOS() < OsVersion::Vista ? kServiceBeforeVista : kService;
  ServiceInfo info;
  UnicodeString displayName;
  const bool running =
      GetServiceState(service, info, displayName) == ERRC_SUCCESS && info.state == kRunning;
  IFirewall& firewall = Platform().firewall;
  if (running && firewall.Connect() == Status::Ok) FFwMgr = &firewall;
  FState = rcpInited;
}

void TRCPFirewall::Init() {
  // The one item stands for the whole list, which is only read while scanning.
  SetFScanItemCount(1);
  ScanWeight = FScanItemCount * kWeightPerItem;
}

void TRCPFirewall::Scan() {
  ErrorCount = 0;
  std::vector<FirewallApplication> applications;
  if (IsAdmin() && FFwMgr != nullptr && FFwMgr->Applications(applications) == Status::Ok) {
    for (const FirewallApplication& application : applications) Check_Application(application);
  }
  FState = rcpScanned;
}

void TRCPFirewall::Check_Application(const FirewallApplication& application) {
  const UnicodeString& file = application.imageFile;
  if (SameText(file, kSystem)) return;
  if (!FileIsOnFixedDrive(file, false) || PathFileExistsWrapper(file)) return;
  AddError(kMissingApplication,
           {u"displayname:" + application.name, u"missingfile:" + file, u"imagefile:" + file});
}

bool TRCPFirewall::CleanError(const TSweepError& error) {
  if (error.ErrorType == kMissingApplication && FFwMgr != nullptr) {
    const UnicodeString imageFile = InsertData(u"#imagefile#", error.Data);
    // Some firewalls let go of an entry only after it was switched off.
    if (FFwMgr->Remove(imageFile) != Status::Ok &&
        FFwMgr->SetEnabled(imageFile, false) == Status::Ok) {
      FFwMgr->Remove(imageFile);
    }
  }
  return true;  // deliberately, whatever came of it
}

}  // namespace scrubwell
