// descriptor.h
//
// The owner of a descriptor of the kernel.
#pragma once
#include <unistd.h>

#include <utility>

namespace machine {

class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int value) : value_(value) {}
  Descriptor(Descriptor&& other) noexcept : value_(other.Release()) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    if (this != &other) Reset(other.Release());
    return *this;
  }
  ~Descriptor() { Reset(); }

  int Get() const { return value_; }
  explicit operator bool() const { return value_ >= 0; }
  int Release() { return std::exchange(value_, -1); }
  void Reset(int value = -1) {
    if (value_ > 2) close(value_);  // the standard ones stay open
    value_ = value;
  }

 private:
  int value_ = -1;
};

}  // namespace machine
