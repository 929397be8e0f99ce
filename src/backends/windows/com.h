// Owners for what COM gives out, so that everything is released on every path.
#pragma once

#include "backends/windows/win32.h"

// After the general header.
#include <objbase.h>
#include <oleauto.h>

#include <functional>

namespace scrubwell::windows {

/// One reference to a COM object.
template <class T>
class ComPtr {
 public:
  ComPtr() = default;
  ComPtr(ComPtr&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  ComPtr& operator=(ComPtr&& other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~ComPtr() { Reset(); }

  [[nodiscard]] bool Good() const { return object_ != nullptr; }
  [[nodiscard]] T* Get() const { return object_; }
  T* operator->() const { return object_; }
  void Reset() {
    if (object_ != nullptr) object_->Release();
    object_ = nullptr;
  }
  /// For functions that store a reference.
  T** Out() {
    Reset();
    return &object_;
  }
  void** OutVoid() { return reinterpret_cast<void**>(Out()); }

 private:
  T* object_ = nullptr;
};

/// Makes an object; replaced by tests.
template <class T>
using ComFactory = std::function<HRESULT(T** out)>;

/// The calling thread takes part in COM for as long as this lives. A host that has chosen the other
/// kind of apartment keeps it.
class ComApartment {
 public:
  ComApartment() : result_(CoInitialize(nullptr)) {}
  ~ComApartment() {
    if (SUCCEEDED(result_)) CoUninitialize();
  }
  ComApartment(const ComApartment&) = delete;
  ComApartment& operator=(const ComApartment&) = delete;

 private:
  HRESULT result_;
};

/// A text that its taker frees.
class TaskText {
 public:
  TaskText() = default;
  ~TaskText() { CoTaskMemFree(text_); }
  TaskText(const TaskText&) = delete;
  TaskText& operator=(const TaskText&) = delete;
  LPWSTR* Out() {
    CoTaskMemFree(text_);
    text_ = nullptr;
    return &text_;
  }
  [[nodiscard]] UnicodeString Text() const { return FromWide(text_); }

 private:
  LPWSTR text_ = nullptr;
};

class BasicText {
 public:
  BasicText() = default;
  explicit BasicText(UnicodeView text)
      : text_(SysAllocStringLen(reinterpret_cast<const wchar_t*>(text.data()),
                                static_cast<UINT>(text.size()))) {}
  ~BasicText() { SysFreeString(text_); }
  BasicText(const BasicText&) = delete;
  BasicText& operator=(const BasicText&) = delete;
  BSTR* Out() {
    SysFreeString(text_);
    text_ = nullptr;
    return &text_;
  }
  [[nodiscard]] BSTR Get() const { return text_; }
  [[nodiscard]] UnicodeString Text() const {
    return text_ == nullptr ? UnicodeString() : FromWide(text_, SysStringLen(text_));
  }

 private:
  BSTR text_ = nullptr;
};

/// What a COM failure says of the thing that was asked for.
inline Status StatusOfCom(HRESULT result) {
  if (SUCCEEDED(result)) return Status::Ok;
  if (HRESULT_FACILITY(result) == FACILITY_WIN32)
    return StatusOfError(static_cast<DWORD>(HRESULT_CODE(result)));
  return result == E_ACCESSDENIED ? Status::Denied : Status::Unknown;
}

}  // namespace scrubwell::windows
