// The system's headers, and the little that every unit beside this one needs of them.
#pragma once

#include <windows.h>

#include <utility>

#include "registry/platform.h"

namespace scrubwell::windows {

// Both are UTF-16 units of two bytes; the compiler alone holds them apart.
static_assert(sizeof(wchar_t) == sizeof(char16_t));

inline const wchar_t* Wide(const UnicodeString& text) {
  return reinterpret_cast<const wchar_t*>(text.c_str());
}
inline wchar_t* WideBuffer(UnicodeString& text) {
  return reinterpret_cast<wchar_t*>(text.data());
}
/// Up to the first NUL; null is empty.
inline UnicodeString FromWide(const wchar_t* text) {
  return text == nullptr ? UnicodeString() : reinterpret_cast<const char16_t*>(text);
}
inline UnicodeString FromWide(const wchar_t* text, std::size_t length) {
  return {reinterpret_cast<const char16_t*>(text), length};
}
/// Texts that hold a NUL can't be given to functions that stop at it.
inline bool HasNul(UnicodeView text) {
  return text.find(u'\0') != UnicodeView::npos;
}

/// What a system error says of the thing that was asked for.
Status StatusOfError(DWORD error);

/// The address of a function that old systems lack; null there.
template <class Function>
Function* SystemFunction(const wchar_t* module, const char* name) {
  const HMODULE loaded = GetModuleHandleW(module);
  const FARPROC address = loaded == nullptr ? nullptr : GetProcAddress(loaded, name);
  // Through void*, for the system hands out all functions as if they were of one type.
  return reinterpret_cast<Function*>(reinterpret_cast<void*>(address));
}

/// Owns something that a function closes.
template <class Handle, auto Close, Handle None = Handle{}>
class Owned {
 public:
  Owned() = default;
  explicit Owned(Handle handle) : handle_(handle) {}
  Owned(Owned&& other) noexcept : handle_(std::exchange(other.handle_, None)) {}
  Owned& operator=(Owned&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
  }
  ~Owned() { Reset(); }

  [[nodiscard]] Handle Get() const { return handle_; }
  [[nodiscard]] bool Good() const { return handle_ != None; }
  void Reset() {
    if (handle_ != None) Close(handle_);
    handle_ = None;
  }
  /// For functions that store a handle; what was owned is closed.
  Handle* Out() {
    Reset();
    return &handle_;
  }

 private:
  Handle handle_ = None;
};

using OwnedHandle = Owned<HANDLE, &CloseHandle>;
using OwnedService = Owned<SC_HANDLE, &CloseServiceHandle>;
using OwnedModule = Owned<HMODULE, &FreeLibrary>;

/// Where a 32-bit process on a 64-bit system finds what it looks for under that path.
UnicodeString RedirectedPath(UnicodeView path);

/// A path as this process must spell it to reach what a view has there: a 64-bit process has no
/// redirection to switch on.
UnicodeString PathInView(UnicodeView path, FsView view);

/// While this lives, paths are looked up in that view by this thread, whatever was set before. Of
/// use in a 32-bit process only; see PathInView.
class RedirectionScope {
 public:
  explicit RedirectionScope(FsView view);
  ~RedirectionScope();
  RedirectionScope(const RedirectionScope&) = delete;
  RedirectionScope& operator=(const RedirectionScope&) = delete;

 private:
  bool changed_ = false;
  void* before_ = nullptr;
};

/// Without a trailing backslash.
UnicodeString WindowsFolder();

/// True in a 32-bit process on a 64-bit system.
bool IsWow64();
/// True on a 64-bit system, in a process of either width.
bool Is64BitSystem();

}  // namespace scrubwell::windows
