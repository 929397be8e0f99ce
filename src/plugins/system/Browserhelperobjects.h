// The browser's helper objects: add-ons that Internet Explorer loads by their class identifiers.
//
// The operations are virtual so that a host of the loadable module can call them on objects that
// the module made.
#pragma once

#include <memory>

#include "registry/types.h"

namespace scrubwell {

/// One registered helper object, named by its subkey, which usually is a class identifier.
class TBrowserHelperObject {
 public:
  TBrowserHelperObject(UnicodeView clsid, TZmRegOptions options) : CLSID(clsid), Options(options) {}
  virtual ~TBrowserHelperObject() = default;

  const UnicodeString CLSID;
  const TZmRegOptions Options;  ///< the view in which the entry was found

  /// False only when the class is proven not to be registered in the object's view.
  [[nodiscard]] virtual bool IsValid() const;
  [[nodiscard]] virtual bool Is64BitEntry() const;
  /// The full path of the object's entry, without a view.
  [[nodiscard]] virtual UnicodeString GetRegKeyPath() const;
  /// The class's name, or the class identifier where it has none.
  [[nodiscard]] virtual UnicodeString GetDisplayName() const;
  /// The class's server as registered; empty when there is none.
  [[nodiscard]] virtual UnicodeString GetFile() const;
  /// Removes the entry; the class itself stays.
  virtual void Delete();
  /// The current user's choice, which holds for both views.
  [[nodiscard]] virtual bool GetDisabled() const;
  virtual void SetDisabled(bool disabled);
};

/// All helper objects of the machine, those of the 32-bit view first. Owns them; they stay until
/// the next Reload.
class TBrowserHelperObjects {
 public:
  virtual ~TBrowserHelperObjects() = default;
  virtual void Reload();
  /// Loads the list first when it never was.
  virtual std::int32_t GetCount();
  /// Null when there is no such object.
  [[nodiscard]] virtual TBrowserHelperObject* GetObject(std::int32_t index) const;

 private:
  void ClearBHObjects() { FObjects.clear(); }
  void EnumBHObjects(RootKey root, UnicodeView keyPath, TZmRegOptions options);

  bool FLoaded = false;
  std::vector<std::unique_ptr<TBrowserHelperObject>> FObjects;
};

}  // namespace scrubwell
