// Registry, file and system operations that the framework and the plugins call. All of them work
// on the current platform, throw nothing for a miss and run on the thread that scans or cleans.
//
// Three outcomes meet two here: an operation that answers with a boolean answers to the safe side
// when the platform can't tell. "Missing" is only ever said of what is proven missing.
#pragma once

#include "registry/platform.h"

namespace scrubwell {

// System error codes that the operations below return.
inline constexpr std::int32_t ERRC_SUCCESS = 0;
inline constexpr std::int32_t ERRC_FILE_NOT_FOUND = 2;
inline constexpr std::int32_t ERRC_ACCESS_DENIED = 5;
inline constexpr std::int32_t ERRC_INVALID_PARAMETER = 87;
inline constexpr std::int32_t ERRC_BADDB = 1009;
inline constexpr std::int32_t ERRC_CANTREAD = 1012;
inline constexpr std::int32_t ERRC_UNSUPPORTED_TYPE = 1630;

/// The system error code that stands for a primitive's outcome.
std::int32_t ErrorCode(Status status);

/// The view that an option set asks for.
View ViewOf(TZmRegOptions opts);

/// While true, deletions override the rights of the key they delete. A cleaner that sets it puts
/// it back on every path.
extern bool ForceRegDelete;

// ---- Registry -----------------------------------------------------------------------------

/// Names of the direct subkeys, appended to `names` after it was cleared; none for a missing key.
void EnumRegKeysEx(RootKey root, UnicodeView key, TStringList& names, TZmRegOptions opts);

/// Value names and their data as text (see RegValueText), both lists cleared first, same order.
void EnumRegValuesEx(RootKey root, UnicodeView key, TStringList& names, TStringList& data,
                     TZmRegOptions opts);

/// True when the key can be opened in the view. A key that can't be read for lack of rights, or
/// whose place is damaged, counts as existing, for nobody may conclude that it is missing.
/// `flag` asks for nothing more; both values behave the same.
bool KeyExist(RootKey root, UnicodeView key, TZmRegOptions opts, bool flag = false);

/// True when there is a subkey, or when that can't be told.
bool HasSubKeys(RootKey root, UnicodeView key, TZmRegOptions opts);
bool HasSubKeysEx(RootKey root, UnicodeView key, TZmRegOptions opts);

/// True when the key has a value, or when that can't be told.
bool HasValues(RootKey root, UnicodeView key, TZmRegOptions opts);
/// 0: no values, 1: has values, 2: the key can't be opened.
int HasValuesEx(RootKey root, UnicodeView key, TZmRegOptions opts);

/// No subkeys, and no value but perhaps an empty default value. A named value is content, whatever
/// its data. False for a missing key and where it can't be told.
bool KeyEmptyEx(RootKey root, UnicodeView key, TZmRegOptions opts);
/// No subkeys and no value at all. False for a missing key and where it can't be told.
bool KeyEmptyExEx(RootKey root, UnicodeView key, TZmRegOptions opts);

/// 0 for a missing key.
std::int32_t GetSubKeyCount(RootKey root, UnicodeView key, TZmRegOptions opts);
std::int32_t GetValueCount(RootKey root, UnicodeView key, TZmRegOptions opts);

/// A value's text as stored: a REG_EXPAND_SZ is not expanded. 0 when it was read, else a system
/// error code and an empty output. A value of another type than text is ERRC_UNSUPPORTED_TYPE.
std::int32_t GetRegStringValue(RootKey root, UnicodeView key, UnicodeView name, UnicodeString& out,
                               TZmRegOptions opts);
UnicodeString GetRegStringValueDef(RootKey root, UnicodeView key, UnicodeView name,
                                   UnicodeView fallback, TZmRegOptions opts);
UnicodeString GetRegString(RootKey root, UnicodeView key, UnicodeView name, UnicodeView fallback,
                           TZmRegOptions opts);
/// 0 when a 32-bit number was read, else a system error code and 0 in the output.
std::int32_t GetRegDWORDValue(RootKey root, UnicodeView key, UnicodeView name, std::uint32_t& out,
                              TZmRegOptions opts);

/// Writes a text, creating the key when it is missing. A value that was expandable stays so.
void SetRegStringValue(RootKey root, UnicodeView key, UnicodeView name, UnicodeView value,
                       TZmRegOptions opts);
void SetRegDWORDValue(RootKey root, UnicodeView key, UnicodeView name, std::uint32_t value,
                      TZmRegOptions opts);
/// The empty name is the default value. True also where it can't be told.
bool RegValueExists(RootKey root, UnicodeView key, UnicodeView name, TZmRegOptions opts);
/// Whether the value is one text. False for any other type, for a missing value and where it can't
/// be told.
bool RegValueIsText(RootKey root, UnicodeView key, UnicodeView name, TZmRegOptions opts);
void CreateRegKey(RootKey root, UnicodeView key, TZmRegOptions opts);

/// Deletes the key with its subtree; 0 or a system error code. An empty path is refused with
/// ERRC_INVALID_PARAMETER: a root is never deleted.
std::int32_t DeleteRegKey(RootKey root, UnicodeView key, TZmRegOptions opts);
/// Deletes one value; the empty name is the default value.
std::int32_t DeleteRegValue(RootKey root, UnicodeView key, UnicodeView name, TZmRegOptions opts);

/// Whether the current user may delete or write the key; false for a missing key and where it
/// can't be told. `flag` is accepted and without effect.
bool KeyIsDeletable(RootKey root, UnicodeView key, TZmRegOptions opts, bool flag = false);
bool KeyIsWriteable(RootKey root, UnicodeView key, TZmRegOptions opts, bool flag = false);

/// "HKLM" or "HKEY_LOCAL_MACHINE"; empty for no root.
UnicodeString GetRegMainKeyString(RootKey root, bool shortForm);
/// Root name, backslash, key; the root name alone for an empty key.
UnicodeString RegKeyToStr(RootKey root, UnicodeView key, bool shortForm);
/// Accepts long and short names in any letter case; RootKey::None for anything else.
RootKey GetMainKeyFromString(UnicodeView name);
/// Splits a full path. False for an unknown root and for a key that can't be opened in any view.
/// `opts` says where it was found: the empty set when the process's own view has it, else the view
/// that does. The outputs hold root and path also when the key was not found.
bool GetRegKeyFromString(UnicodeView fullPath, RootKey& root, UnicodeString& key,
                         TZmRegOptions& opts);

/// A value's data as text: texts up to their first NUL, a multi-text joined by line feeds, numbers
/// in decimal, binary data only when it is printable UTF-16, else empty.
UnicodeString RegValueText(const RegValue& value);
/// True for REG_SZ, REG_EXPAND_SZ and the like, whose data is one text.
bool IsTextType(std::uint32_t type);
/// The bytes of a text value: UTF-16LE with its terminating NUL.
Bytes TextData(UnicodeView text);

// ---- Files --------------------------------------------------------------------------------

/// Locates a file given by name, path or command line: quotation marks and arguments are taken
/// off, variables expanded, bare names searched for along the search order. False only when it is
/// proven missing; true with an empty `found` when that can't be told, and for an empty text.
bool FindFile(UnicodeView text, UnicodeString& found, UnicodeString& arguments);
bool FindFile(UnicodeView text);
/// As FindFile, on network drives too: there a file is missing when the drive is attached, its root
/// answers and the file isn't there. What a launcher is told to use stays a matter of fixed drives.
bool FindFileOnAnyDrive(UnicodeView text);
/// As FindFile; folders count too.
bool FindFileOrDir(UnicodeView text, UnicodeString& found, UnicodeString& arguments);
bool FindFileOrDir(UnicodeView text);
/// 0: all there or not to be told, 1: the program is missing, 2: a file that the arguments name is
/// missing. `file` and `arguments` receive the two parts of the command line.
int FindFileAndVerifyArguments(UnicodeView commandLine, UnicodeString& file,
                               UnicodeString& arguments);

/// With `missing` true: true exactly when the path is proven to name neither file nor folder.
/// With `missing` false: true unless that is proven.
bool FileOrDirExists(UnicodeView path, bool missing);
/// False only when the path is proven to name neither file nor folder.
bool FileOrDirExistsEx(UnicodeView path);
/// False only when there is provably no such file, or only a folder.
bool ZMFileExists(UnicodeView path);
/// True only when the path is known to name a folder. A trailing backslash is ignored.
bool DirectoryExists(UnicodeView path);
/// Takes a bare name through the search order. False only when proven missing.
bool PathFileExistsWrapper(UnicodeView path);
/// Whether a path lies on a local fixed drive. Quotation marks are taken off and variables
/// expanded first. With `needsDrive` true only a path with a drive letter can; with false a name
/// without a drive counts as lying on the system drive. Unmapped letters, network and device
/// paths, addresses and unresolved variables never do.
bool FileIsOnFixedDrive(UnicodeView path, bool needsDrive);
/// Size in bytes; -1 exactly when the file is proven missing, -2 when that can't be told.
std::int64_t ZMGetFileSize(UnicodeView path);
/// False for a missing folder and where it can't be told.
bool IsDirectoryEmpty(UnicodeView path);
/// Saves a copy of the file as it is, for taking a change back.
void BackupFile(UnicodeView path);
/// Deletes a file, or an empty folder; true when it went.
bool ZMDeleteFile(UnicodeView path);
bool ZMRemoveDir(UnicodeView path);
/// Names of a folder's entries; none for a missing one.
void ListFolder(UnicodeView path, std::vector<DirEntry>& entries);

/// Whether the type library file named in the registry is there: like FindFile, and a resource
/// number behind the name ("x.dll\2") is taken off. False only when proven missing, which a name
/// without a drive never is: who loads the library decides where it is looked for.
bool FindTypeLib(UnicodeView text);

/// The Windows folder with a trailing backslash.
UnicodeString GetWinDir();
/// Path of a special folder without a trailing backslash; empty when it is not known.
UnicodeString GetFolderLocStr(int csidl);
/// Takes off one pair of quotation marks that encloses the whole text, else nothing: with a third
/// mark in between, the first doesn't belong to the last.
UnicodeString RemoveQuotationMarks(UnicodeView text);

/// Expands %name% for the view. `resolved` turns false when a name is not known; its text stays.
UnicodeString ExpandEnvironment(UnicodeView text, View view, bool& resolved);

bool IsAdmin();
OsVersion CurrentOS();
/// 0 when the service manager knows the service, else a system error code. `text` receives the
/// service's display name.
std::int32_t GetServiceState(UnicodeView service, ServiceInfo& info, UnicodeString& text);

// ---- Profile strings ----------------------------------------------------------------------

/// Entries of an INI file; a file name without a folder lies in the Windows folder. `flag` is
/// accepted and without effect.
UnicodeString GetPPString(UnicodeView file, UnicodeView section, UnicodeView key,
                          UnicodeView fallback, bool flag = false);
void WritePPString(UnicodeView file, UnicodeView section, UnicodeView key, UnicodeView value,
                   bool flag = false);
void DeletePPString(UnicodeView file, UnicodeView section, UnicodeView key, bool flag = false);
/// The section's entry names, each followed by a NUL.
UnicodeString EnumPPEntries(UnicodeView file, UnicodeView section, bool flag = false);

// ---- Browser history ----------------------------------------------------------------------

/// The browser's address history.
class TUrlHistory {
 public:
  /// Reads all addresses into the list and returns their number.
  std::int32_t Enumerate(TStringList& urls);
  /// 0 when the address is in the history.
  std::int32_t QueryUrl(UnicodeView url);
};
/// The reader that all callers share.
TUrlHistory& IEUrlHistory();
/// True when the entry went.
bool DeleteUrlHistoryEntry(UnicodeView url);
/// Major version of the browser, 0 when there is none.
int GetIEVersion();

}  // namespace scrubwell
