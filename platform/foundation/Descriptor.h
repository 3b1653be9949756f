// SPDX-License-Identifier: MIT
#pragma once

#include <unistd.h>

#include <utility>

namespace annivo {

/// An open file descriptor; closed on destruction.
class Descriptor {
 public:
  Descriptor() = default;
  /// Takes over what open() and its like gave; a negative number is none.
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~Descriptor() {
    if (valid()) ::close(number_);
  }
  [[nodiscard]] bool valid() const { return number_ >= 0; }
  [[nodiscard]] int number() const { return number_; }
  /// Closes now; errno tells why when that fails (a write that the system had put off).
  [[nodiscard]] bool close() { return ::close(std::exchange(number_, -1)) == 0; }

 private:
  int number_ = -1;
};

}  // namespace annivo
