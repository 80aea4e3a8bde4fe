// Value procedures every class uses to count, copy, extend, join, compare
// and reduce automation values: single values, object references and
// one-dimensional arrays (often of Variants that hold further arrays).
// They hold no state. ElementCount, TolerantEqual and AssignValue never
// raise: callers test `ElementCount(x) > 0` to see whether x is a
// non-empty array.
#ifndef TOVIK_FRAME_VALUE_HELPERS_H_
#define TOVIK_FRAME_VALUE_HELPERS_H_

#include <cstdint>
#include <initializer_list>
#include <span>

#include "frame/variant.h"

namespace tovik {

// Number of elements of the first dimension of an array, UBound - LBound +
// 1, as a 16-bit Integer. 0 for anything that is not an array, for an
// array with bounds 0..-1 and when the count does not fit in an Integer.
int16_t ElementCount(const Variant& value);

// Inserts value into array (in/out) at position, growing it by one and
// keeping its lower bound and element type. Missing position appends;
// a position below LBound inserts at LBound, one above UBound + 1 appends.
// A value that is no array becomes a one-element Variant array from 0.
// Objects are stored as references, arrays are copied.
void InsertElement(Variant& array, const Variant& value,
                   const Variant& position = Variant::Missing());

// A new 0-based Variant array holding every value in order; an array
// argument is spread out one level (its elements are appended, an empty
// array adds nothing); an element that is itself an array stays one element.
Variant JoinValues(std::span<const Variant> values);
Variant JoinValues(std::initializer_list<Variant> values);

// Compares a and b with a tolerance (in/out):
//   - a String: with tolerance non-zero, the trimmed upper-cased texts of
//     a and b; with tolerance 0, a = b;
//   - an object: a and b are the same object;
//   - an array: equal element counts, then element by element from a's
//     lower bound up to, but not including, the element count (so with a
//     lower bound of 1 the last element is never compared), b indexed
//     like a;
//   - numbers: a Single or Double a with tolerance 0 sets tolerance to
//     1E-06, written back to the caller; equal when a = b, when both
//     magnitudes are below the tolerance, or when |b / a - 1| <= |tolerance|.
// Any failure (type mismatch, division by zero...) gives False.
bool TolerantEqual(const Variant& a, const Variant& b, double& tolerance);

// Deep copy of source into target (in/out): an array is copied element by
// element into a Variant array with the source's bounds (an empty source
// array erases target to Empty); an object is shared; Empty erases an
// array target; any other value is copied. Never raises.
void AssignValue(Variant& target, const Variant& source);

// The smallest / largest of the values, compared with the runtime's < and
// >; ties keep the earlier value. When the first value is an array, its
// elements are reduced instead (the other values are not looked at).
// Raises what the comparison raises (13 for a number against a non-numeric
// string). An empty list gives Empty.
Variant MinOf(std::span<const Variant> values);
Variant MinOf(std::initializer_list<Variant> values);
Variant MaxOf(std::span<const Variant> values);
Variant MaxOf(std::initializer_list<Variant> values);

// Extends the box min_p..max_p (points, in/out) to hold point p: for each
// of X, Y, Z, min_p takes p's coordinate when it is smaller and max_p when
// it is larger. REQUIRES: all three are arrays with indexes 0..2.
void ExtendExtents(Variant& min_p, Variant& max_p, const Variant& p);

// A point: a 0-based array of three Doubles.
Variant MakePoint(double x, double y, double z);

}  // namespace tovik

#endif  // TOVIK_FRAME_VALUE_HELPERS_H_
