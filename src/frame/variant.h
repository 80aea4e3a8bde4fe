// The automation value: what every late-bound call takes and returns.
//
// A Variant holds Empty, Null, a number (Integer = 16-bit, Long = 32-bit,
// LongLong = 64-bit, Single, Double, Date, Byte), a Boolean (True reads as -1),
// a String (UTF-8), an Error code (Missing is the Error code of an omitted
// optional argument, as in COM), an object reference (or Nothing), or an
// array (SafeArray). Copying a Variant copies arrays deeply (copy-on-write, so
// a copy is cheap until one side changes) and objects shallowly.
#ifndef TOVIK_FRAME_VARIANT_H_
#define TOVIK_FRAME_VARIANT_H_

#include <cstdint>
#include <initializer_list>
#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tovik {

class Dispatch;
class SafeArray;

// A reference to an automation object; an empty pointer is Nothing.
using ObjectRef = std::shared_ptr<Dispatch>;

// Variant type codes, numbered as the automation runtime numbers them
// (VarType() of a value; arrays add kArrayFlag).
enum class VarType : uint16_t {
  kEmpty = 0,
  kNull = 1,
  kInteger = 2,
  kLong = 3,
  kSingle = 4,
  kDouble = 5,
  kCurrency = 6,
  kDate = 7,
  kString = 8,
  kObject = 9,
  kError = 10,
  kBoolean = 11,
  kVariant = 12,
  kByte = 17,
  kLongLong = 20,
};
inline constexpr int kArrayFlag = 8192;

// The COM status code an omitted optional argument carries (DISP_E_PARAMNOTFOUND).
inline constexpr int32_t kMissingScode = static_cast<int32_t>(0x80020004u);

// Automation Boolean values.
inline constexpr int16_t kTrue = -1;
inline constexpr int16_t kFalse = 0;

class Variant {
 public:
  // Empty.
  Variant() = default;
  Variant(int16_t v) : type_(VarType::kInteger), data_(int64_t{v}) {}
  Variant(int32_t v) : type_(VarType::kLong), data_(int64_t{v}) {}
  Variant(int64_t v) : type_(VarType::kLongLong), data_(v) {}
  Variant(float v) : type_(VarType::kSingle), data_(double{v}) {}
  Variant(double v) : type_(VarType::kDouble), data_(v) {}
  Variant(bool v) : type_(VarType::kBoolean), data_(int64_t{v ? -1 : 0}) {}
  Variant(const char* v) : type_(VarType::kString), data_(std::string(v)) {}
  Variant(std::string v) : type_(VarType::kString), data_(std::move(v)) {}
  Variant(std::string_view v) : type_(VarType::kString), data_(std::string(v)) {}
  // An object reference; a null pointer is Nothing.
  Variant(ObjectRef v) : type_(VarType::kObject), data_(std::move(v)) {}
  template <class T>
    requires std::is_base_of_v<Dispatch, T>
  Variant(std::shared_ptr<T> v)
      : type_(VarType::kObject), data_(ObjectRef(std::move(v))) {}
  Variant(SafeArray array);
  // Unsigned values must say which automation type they become.
  Variant(unsigned) = delete;

  Variant(const Variant& other) = default;
  Variant(Variant&& other) noexcept = default;
  Variant& operator=(const Variant& other) = default;
  Variant& operator=(Variant&& other) noexcept = default;

  static Variant Null();
  static Variant Missing();
  static Variant Nothing() { return Variant(ObjectRef()); }
  static Variant Error(int32_t scode);
  static Variant Byte(uint8_t v);
  static Variant Date(double serial);
  static Variant Integer(int16_t v) { return Variant(v); }
  static Variant Long(int32_t v) { return Variant(v); }

  // The type code without the array flag; for arrays, the element type.
  VarType Type() const { return type_; }
  // VarType() as the runtime reports it: arrays add 8192.
  int VarTypeCode() const;

  bool IsEmpty() const { return type_ == VarType::kEmpty && !IsArray(); }
  bool IsNull() const { return type_ == VarType::kNull; }
  bool IsMissing() const;
  bool IsError() const { return type_ == VarType::kError && !IsArray(); }
  bool IsArray() const;
  bool IsObject() const { return type_ == VarType::kObject && !IsArray(); }
  bool IsNothing() const;
  bool IsString() const { return type_ == VarType::kString && !IsArray(); }
  bool IsBoolean() const { return type_ == VarType::kBoolean && !IsArray(); }
  // Integer, Long, LongLong, Single, Double, Date, Byte or Boolean held directly.
  bool IsNumber() const;

  // Raw access; each requires the matching type (callers check first).
  int64_t RawInt() const { return std::get<int64_t>(data_); }
  double RawDouble() const { return std::get<double>(data_); }
  const std::string& RawString() const { return std::get<std::string>(data_); }
  const ObjectRef& RawObject() const { return std::get<ObjectRef>(data_); }
  bool RawBool() const { return std::get<int64_t>(data_) != 0; }
  int32_t RawError() const { return static_cast<int32_t>(std::get<int64_t>(data_)); }

  // The array held; raises type mismatch (13) when the value is no array.
  const SafeArray& Array() const;
  // Mutable access to the array held (detaches a shared copy first).
  SafeArray& MutableArray();

  // The object held; raises 13 for a non-object and 91 for Nothing.
  const ObjectRef& Object() const;

  // Identity of objects, equality of everything else held directly
  // (no conversions); arrays compare element by element.
  bool SameAs(const Variant& other) const;

 private:
  friend class SafeArray;
  using ArrayPtr = std::shared_ptr<SafeArray>;
  Variant(VarType type, int64_t raw) : type_(type), data_(raw) {}
  Variant(VarType type, double raw) : type_(type), data_(raw) {}

  VarType type_ = VarType::kEmpty;
  std::variant<std::monostate, int64_t, double, std::string, ObjectRef, ArrayPtr>
      data_;
};

// One array dimension: its lower bound and element count.
struct ArrayBound {
  int32_t lower = 0;
  int32_t count = 0;
};

// An automation array: an element type (kVariant for arrays of Variants),
// one or more dimensions with their own lower bounds, and the elements.
// Elements stored in a typed array are converted to its element type.
class SafeArray {
 public:
  // A one-dimensional array of `count` elements from `lower`, each the
  // element type's default (0, "", Nothing or Empty).
  SafeArray(VarType element_type, int32_t lower, int32_t count);
  // A multi-dimensional array; elements in row-major order of `bounds`.
  SafeArray(VarType element_type, std::vector<ArrayBound> bounds);
  SafeArray(const SafeArray&) = default;
  SafeArray(SafeArray&&) noexcept = default;
  SafeArray& operator=(const SafeArray&) = default;
  SafeArray& operator=(SafeArray&&) noexcept = default;
  // Frees nested arrays iteratively, so a table nested thousands deep does
  // not exhaust the stack.
  ~SafeArray();

  // A 0-based Variant array of the given values (the runtime's Array()).
  static SafeArray Of(std::initializer_list<Variant> values);
  static SafeArray OfVariants(std::vector<Variant> values, int32_t lower = 0);
  // A 0-based array of Doubles.
  static SafeArray OfDoubles(std::initializer_list<double> values);
  static SafeArray OfDoubles(const std::vector<double>& values);
  // A 0-based array of objects (what members taking "an array of objects"
  // expect).
  static SafeArray OfObjects(const std::vector<ObjectRef>& objects);
  // An empty array (bounds 0..-1) of the given element type.
  static SafeArray Empty(VarType element_type = VarType::kVariant) {
    return SafeArray(element_type, 0, 0);
  }

  VarType ElementType() const { return element_type_; }
  int Dims() const { return static_cast<int>(bounds_.size()); }
  // Bounds of dimension `dim` (1-based, as LBound/UBound take it); a
  // dimension that does not exist raises 9.
  int32_t LBound(int dim = 1) const;
  int32_t UBound(int dim = 1) const;
  int32_t Count() const { return static_cast<int32_t>(items_.size()); }
  bool empty() const { return items_.empty(); }

  // Element `index` of a one-dimensional array; out of bounds raises 9.
  const Variant& At(int32_t index) const;
  // Element at `indexes` (one per dimension); out of bounds raises 9.
  const Variant& At(std::initializer_list<int32_t> indexes) const;
  // Stores `value` at `index`, converted to the element type (13 or 6 when
  // it cannot be); out of bounds raises 9.
  void Set(int32_t index, Variant value);
  void Set(std::initializer_list<int32_t> indexes, Variant value);
  // The element itself, for passing by reference. For a typed array the
  // caller must store a value of the element type.
  Variant& Ref(int32_t index);

  // ReDim of a one-dimensional array to lower..lower+count-1; with
  // `preserve` the elements whose indexes remain keep their values.
  void Redim(int32_t lower, int32_t count, bool preserve);
  // Appends one element at UBound + 1 (converted to the element type).
  void Append(Variant value);

  // Elements in storage order.
  const std::vector<Variant>& Items() const { return items_; }

  // A double array's elements as doubles (any numeric element array converts).
  std::vector<double> ToDoubles() const;

 private:
  size_t Offset(int32_t index) const;
  size_t Offset(std::initializer_list<int32_t> indexes) const;
  Variant Coerce(Variant value) const;

  VarType element_type_;
  std::vector<ArrayBound> bounds_;
  std::vector<Variant> items_;
};

// The default value a typed array element or a typed variable starts with.
Variant DefaultOf(VarType type);

// For GoogleTest failure messages.
void PrintTo(const Variant& value, std::ostream* os);

}  // namespace tovik

#endif  // TOVIK_FRAME_VARIANT_H_
