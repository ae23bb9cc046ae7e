// unique_handle.h
//
// Owners of the platform's handles, each with its release call in the type.
#pragma once
#include <windows.h>

#include <utility>

// `Traits` gives the handle's type, its empty value, and its release call.
template <typename Traits>
class UniqueResource {
 public:
  using Type = typename Traits::Type;

  UniqueResource() : value_(Traits::Empty()) {}
  explicit UniqueResource(Type value) : value_(value) {}
  UniqueResource(UniqueResource&& other) noexcept : value_(other.Release()) {}
  UniqueResource& operator=(UniqueResource&& other) noexcept {
    if (this != &other) Reset(other.Release());
    return *this;
  }
  ~UniqueResource() { Reset(); }

  Type Get() const { return value_; }
  explicit operator bool() const { return Traits::IsValid(value_); }
  Type Release() { return std::exchange(value_, Traits::Empty()); }
  void Reset(Type value = Traits::Empty()) {
    if (Traits::IsValid(value_)) Traits::Close(value_);
    value_ = value;
  }

  // For calls that hand back a handle through a pointer; what was held is released first.
  Type* Receive() {
    Reset();
    return &value_;
  }

 private:
  Type value_;
};

struct FileHandleTraits {
  using Type = HANDLE;
  static Type Empty() { return INVALID_HANDLE_VALUE; }
  static bool IsValid(Type value) { return value != INVALID_HANDLE_VALUE && value != nullptr; }
  static void Close(Type value) { CloseHandle(value); }
};
struct KernelHandleTraits {
  using Type = HANDLE;
  static Type Empty() { return nullptr; }
  static bool IsValid(Type value) { return value != nullptr && value != INVALID_HANDLE_VALUE; }
  static void Close(Type value) { CloseHandle(value); }
};
struct FindHandleTraits {
  using Type = HANDLE;
  static Type Empty() { return INVALID_HANDLE_VALUE; }
  static bool IsValid(Type value) { return value != INVALID_HANDLE_VALUE; }
  static void Close(Type value) { FindClose(value); }
};
struct KeyTraits {
  using Type = HKEY;
  static Type Empty() { return nullptr; }
  static bool IsValid(Type value) { return value != nullptr; }
  static void Close(Type value) { RegCloseKey(value); }
};
struct LocalMemoryTraits {
  using Type = void*;
  static Type Empty() { return nullptr; }
  static bool IsValid(Type value) { return value != nullptr; }
  static void Close(Type value) { LocalFree(value); }
};

using UniqueFile = UniqueResource<FileHandleTraits>;      // from CreateFileW
using UniqueHandle = UniqueResource<KernelHandleTraits>;  // threads, processes, tokens
using UniqueFind = UniqueResource<FindHandleTraits>;      // from FindFirstFileW
using UniqueKey = UniqueResource<KeyTraits>;
using UniqueLocalMemory = UniqueResource<LocalMemoryTraits>;
