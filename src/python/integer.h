#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "python/object.h"

namespace context_delta::python {

/// An integer of any size. What fits 64 bits is held so; any other number of the host (a larger
/// one, a bool, a value of a number type of its own) stays the host's object and is reckoned with
/// by the host's operators.
class Integer {
 public:
  Integer(std::int64_t number = 0) : number_(number) {}
  Integer(const Object& value);

  Object object() const;

  explicit operator bool() const;
  /// As an index. Raises TypeError when the host's object is no integer.
  explicit operator std::size_t() const;

  friend Integer operator-(const Integer& a);
  friend Integer operator+(const Integer& a, const Integer& b);
  friend Integer operator-(const Integer& a, const Integer& b);
  friend bool operator==(const Integer& a, const Integer& b) { return (a <=> b) == 0; }
  friend std::weak_ordering operator<=>(const Integer& a, const Integer& b);
  /// int(total * granted)
  friend Integer truncated_product(const Integer& total, double granted);

 private:
  bool is_native() const { return native_; }

  std::int64_t number_ = 0;
  Object value_;  // where number_ does not hold the integer
  bool native_ = true;
};

/// The sum of two attributes.
Integer operator+(const Object& a, const Object& b);

}  // namespace context_delta::python
