// handles.h
//
// The handle table: what stands behind a HANDLE of files, searches, threads, processes and tokens.
#pragma once
#include <windows.h>

#include <memory>

namespace machine {

// The base of everything that a handle can name. What a handle held is released with the last
// reference, so that a close on one thread never pulls an object from under a call on another.
struct Object {
  virtual ~Object() = default;
};

// A new handle for `object`: a small multiple of 4, never 0 or INVALID_HANDLE_VALUE.
HANDLE AddHandle(std::shared_ptr<Object> object);

// The object behind `handle`, or null if there is none. No error is set.
std::shared_ptr<Object> FindHandle(HANDLE handle);

// The object if it is a T; otherwise null and ERROR_INVALID_HANDLE as the last error.
template <typename T>
std::shared_ptr<T> HandleTo(HANDLE handle) {
  auto object = std::dynamic_pointer_cast<T>(FindHandle(handle));
  if (!object) SetLastError(ERROR_INVALID_HANDLE);
  return object;
}

// False and ERROR_INVALID_HANDLE if there is no such handle.
bool RemoveHandle(HANDLE handle);

}  // namespace machine
