// What an open offline backend consists of. Not for use outside this folder.
#pragma once

#include "backends/common/composed_registry.h"
#include "backends/common/ini_profiles.h"
#include "backends/offline/offline_backend.h"
#include "backends/offline/offline_browser.h"
#include "backends/offline/offline_resources.h"
#include "backends/offline/offline_services.h"
#include "backends/offline/offline_shell.h"
#include "backends/offline/offline_tasks.h"
#include "backends/offline/text_services.h"
#include "backends/offline/users.h"
#include "registry/Stringhelper.h"

namespace scrubwell {

namespace offline {

/// The installation's ANSI code page.
unsigned CodePageOf(const Installation& installation);

}  // namespace offline

// Built in two steps: what is needed to know the target, then the platform over it.
struct OfflineBackend::Parts {
  struct World {
    World(Parts& parts, const ComposedSettings& settings)
        : registry(settings),
          system(registry, parts.installation, parts.user),
          text(offline::CodePageOf(parts.installation)),
          shell(registry, system, parts.files, text.CodePage(), parts.user != nullptr),
          resources(registry, parts.files),
          profiles(registry, parts.files, text, parts.installation.systemRoot),
          services(registry),
          tasks(registry, system, parts.files),
          firewall(registry, system, resources),
          browser(registry, shell, parts.files, text, parts.notes),
          platform{registry, parts.files, system,   text,    shell,  resources,   profiles,
                   services, tasks,       firewall, browser, images, parts.notes, {}} {}

    ComposedRegistry registry;
    offline::OfflineSystem system;
    offline::TextServices text;
    offline::OfflineShell shell;
    offline::OfflineResources resources;
    IniProfiles profiles;
    offline::OfflineServices services;
    offline::OfflineTasks tasks;
    offline::OfflineFirewall firewall;
    offline::OfflineBrowser browser;
    IImages images;  // none: they are the host's
    TPlatform platform;
  };

  bool AddDrives(const TargetOptions& options, std::string& error);
  bool PickUser(const std::string& wanted, std::string& error);
  void MountHives();
  void MountFile(UnicodeView place, const UnicodeString& path);
  /// Says among the target's facts where the hive's file lies.
  void TellHive(UnicodeView place, const UnicodeString& path);
  void MountUsers();
  void MapMountedDevices();
  /// Where the folder of the machine's hives lies.
  offline::DiskPlace ConfigFolder();
  void DescribeTarget(const std::string& folder);

  offline::DriveTree drives;
  offline::OfflineFiles files{drives};
  offline::NoteList notes;
  offline::HiveStore hives{files, notes};
  offline::Installation installation;
  std::vector<offline::UserProfile> users;
  const offline::UserProfile* user = nullptr;
  std::unique_ptr<World> world;
  TargetFacts target;
};

/// The files of an interrupted clean as they will be once it is finished.
struct OfflineBackend::FinishedState {
  std::set<std::string> hives;
  offline::FileChanges files;
};

/// Opens the door to those parts for the rest of this folder.
struct offline::BackendAccess {
  static auto& Of(OfflineBackend& backend) { return *backend.parts_; }
  /// Without a look for an interrupted clean.
  static OfflineOpenResult OpenAsIs(const TargetOptions& options) {
    return OfflineBackend::Open(options, nullptr);
  }
};

}  // namespace scrubwell
