// From a text that the registry holds to the file it means: variables, quotation marks, search
// order, command lines. Used by the file operations of Zmregistry.h and by nothing else.
#pragma once

#include "registry/Zmregistry.h"

namespace scrubwell::paths {

enum class Want : std::uint8_t {
  File,
  FileOrFolder,
  FileOnAnyDrive,  ///< a network drive that can be reached proves as much as a local one
};

/// What a text was found to mean.
struct Lookup {
  Status program = Status::Unknown;   ///< the file or program that the text names
  Status argument = Status::Unknown;  ///< the file that a launcher is told to run, if any
  Status log = Status::Unknown;       ///< the record that an uninstaller needs, if any
  UnicodeString found;                ///< full path of the program; empty unless it was found
  UnicodeString arguments;            ///< what follows the program in a command line
};

/// Several answers to one question: found anywhere is found; missing only when missing everywhere.
class Verdict {
 public:
  /// Adds one answer and returns true when nothing more needs to be asked.
  bool Add(Status status) {
    asked_ = true;
    if (status == Status::Ok)
      found_ = true;
    else if (status != Status::Absent)
      open_ = true;
    return found_;
  }
  [[nodiscard]] Status Get() const {
    if (found_) return Status::Ok;
    return asked_ && !open_ ? Status::Absent : Status::Unknown;
  }

 private:
  bool asked_ = false;
  bool found_ = false;
  bool open_ = false;
};

/// The text with its variables expanded as each view sees them, without doubles; empty when a
/// variable is not known in one of them.
TStringList Expansions(UnicodeView text);

/// Takes the system's own prefixes off ("\??\C:\x" becomes "C:\x", "\SystemRoot\x" lies in the
/// Windows folder). The name of a device ("\\.\C:\x") gets the prefix that all devices have.
UnicodeString WithoutNtPrefix(UnicodeView path);

/// A path with drive letter, backslash and no characters that no file name has.
bool IsDrivePath(UnicodeView path);

/// Looks one full path up. On a 64-bit system it is missing only when both a 64-bit and a 32-bit
/// process miss it. Drives that prove nothing for what is wanted are never looked at: Unknown.
Status Probe(UnicodeView path, Want want, UnicodeString& found);

/// Looks a name or path up, bare names along the search order, usual extensions added where the
/// name has none. Seen from a folder that nobody knows (".\x.exe"), it is Unknown.
Status ProbeName(UnicodeView name, Want want, UnicodeString& found);

/// Resolves a path or command line, launchers and their file included.
Lookup Resolve(UnicodeView text, Want want);

/// Hears how texts are turned into paths. Called on the thread that resolves them.
class ITrace {
 public:
  virtual ~ITrace() = default;
  /// What the text means once its variables are expanded; nothing where one is not known.
  virtual void Expanded(UnicodeView text, const TStringList& meanings) = 0;
  /// A name without a folder is looked for in these, one after the other.
  virtual void Searched(UnicodeView name, const TStringList& folders) = 0;
};
/// Null, which costs nothing, takes the listener off again. Borrowed.
void SetTrace(ITrace* trace);

/// Forgets what was looked up. To be called when files or variables may have changed.
void ForgetLookups();

}  // namespace scrubwell::paths
