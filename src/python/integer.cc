#include "python/integer.h"

#include "python/python_error.h"

namespace context_delta::python {

Integer::Integer(const Object& value) {
  int overflow = 1;
  if (PyLong_CheckExact(value.ptr())) {
    number_ = PyLong_AsLongLongAndOverflow(value.ptr(), &overflow);
  }
  native_ = overflow == 0;
  if (!native_) value_ = value;
}

Object Integer::object() const {
  return is_native() ? Object::taken(PyLong_FromLongLong(number_)) : value_;
}

Integer::operator bool() const { return is_native() ? number_ != 0 : static_cast<bool>(value_); }

Integer::operator std::size_t() const {
  if (is_native()) return static_cast<std::size_t>(number_);
  const std::size_t index = PyLong_AsSize_t(value_.ptr());
  if (PyErr_Occurred() != nullptr) throw_raised();
  return index;
}

Integer operator-(const Integer& a) {
  std::int64_t result = 0;
  if (a.is_native() && !__builtin_sub_overflow(std::int64_t{0}, a.number_, &result)) return result;
  return Object::taken(PyNumber_Negative(a.object().ptr()));
}

Integer operator+(const Integer& a, const Integer& b) {
  std::int64_t result = 0;
  if (a.is_native() && b.is_native() && !__builtin_add_overflow(a.number_, b.number_, &result)) {
    return result;
  }
  return Object::taken(PyNumber_Add(a.object().ptr(), b.object().ptr()));
}

Integer operator-(const Integer& a, const Integer& b) {
  std::int64_t result = 0;
  if (a.is_native() && b.is_native() && !__builtin_sub_overflow(a.number_, b.number_, &result)) {
    return result;
  }
  return Object::taken(PyNumber_Subtract(a.object().ptr(), b.object().ptr()));
}

std::weak_ordering operator<=>(const Integer& a, const Integer& b) {
  if (a.is_native() && b.is_native()) return a.number_ <=> b.number_;
  return a.object() <=> b.object();
}

Integer truncated_product(const Integer& total, double granted) {
  if (total.is_native()) {
    const Object product =
        Object::taken(PyLong_FromDouble(static_cast<double>(total.number_) * granted));
    return product;
  }
  const Object share = Object::taken(PyFloat_FromDouble(granted));
  const Object product = Object::taken(PyNumber_Multiply(total.value_.ptr(), share.ptr()));
  return Object::taken(PyNumber_Long(product.ptr()));
}

Integer operator+(const Object& a, const Object& b) { return Integer(a) + Integer(b); }

}  // namespace context_delta::python
