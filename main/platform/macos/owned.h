// References of the system's C frameworks, and the one place that releases them.
//
// A function with Create or Copy in its name gives a reference that its caller has to release; what
// any other function gives belongs to somebody else and lives only as long as they keep it.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <utility>

namespace callmonitor::platform {

// One reference that goes when this goes; NULL is owned as nothing.
template <class Reference>
class Owned {
 public:
  Owned() = default;
  ~Owned() { release(); }
  Owned(Owned&& other) noexcept : reference_(std::exchange(other.reference_, nullptr)) {}
  Owned& operator=(Owned&& other) noexcept {
    std::swap(reference_, other.reference_);
    return *this;
  }
  Owned(const Owned&) = delete;
  Owned& operator=(const Owned&) = delete;

  // Takes over what a Create or Copy function gave.
  [[nodiscard]] static Owned taken(Reference reference) {
    Owned owned;
    owned.reference_ = reference;
    return owned;
  }

  // Makes a reference of our own to what somebody else owns.
  [[nodiscard]] static Owned shared(Reference reference) {
    if (reference != nullptr) CFRetain(reference);
    return taken(reference);
  }

  // NULL where nothing is owned. Belongs to this.
  [[nodiscard]] Reference get() const { return reference_; }
  [[nodiscard]] explicit operator bool() const { return reference_ != nullptr; }

  // Where a function stores a reference that its caller has to release. What it stores is owned,
  // whether or not the function reports success.
  [[nodiscard]] Reference* slot() {
    release();
    return &reference_;
  }

 private:
  void release() {
    if (reference_ != nullptr) CFRelease(reference_);
    reference_ = nullptr;
  }

  Reference reference_ = nullptr;
};

}  // namespace callmonitor::platform
