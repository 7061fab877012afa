// An owning COM interface pointer, and classes created by ProgID, for the demo and the test programs.
#pragma once

#include <windows.h>

#include <objbase.h>
#include <unknwn.h>

namespace rx9400::tools {

template <typename T>
class ComPtr {
 public:
  ComPtr() = default;
  ~ComPtr() { reset(); }
  ComPtr(const ComPtr&) = delete;
  ComPtr& operator=(const ComPtr&) = delete;
  ComPtr(ComPtr&& other) noexcept : pointer_(other.pointer_) { other.pointer_ = nullptr; }
  ComPtr& operator=(ComPtr&& other) noexcept {
    if (this != &other) {
      reset();
      pointer_ = other.pointer_;
      other.pointer_ = nullptr;
    }
    return *this;
  }

  T* get() const { return pointer_; }
  T* operator->() const { return pointer_; }
  explicit operator bool() const { return pointer_ != nullptr; }
  /// For an out parameter: releases what is held and hands out the slot.
  T** put() {
    reset();
    return &pointer_;
  }
  void** putVoid() { return reinterpret_cast<void**>(put()); }
  void reset() {
    if (pointer_ != nullptr) {
      pointer_->Release();
      pointer_ = nullptr;
    }
  }

 private:
  T* pointer_ = nullptr;
};

/// Creates an in-process class by its ProgID and asks it for `iid`.
template <typename T>
HRESULT createByProgId(const wchar_t* progId, REFIID iid, ComPtr<T>& object) {
  CLSID classId{};
  const HRESULT hr = CLSIDFromProgID(progId, &classId);
  return FAILED(hr) ? hr : CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, iid, object.putVoid());
}

}  // namespace rx9400::tools
