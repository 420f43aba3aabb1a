#include "platform/linux/settings/BinaryForm.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "platform/linux/settings/PropertyListLimits.h"
#include "platform/linux/settings/PropertyListNode.h"

namespace quennel {
namespace {

constexpr std::string_view header = "bplist00";
constexpr std::size_t trailerSize = 32;

/// What the tree below an object amounts to when every reference in it is followed.
struct Extent {
  std::size_t count = 0;
  std::size_t size = 0;
  std::size_t depth = 0;

  bool isWithinLimits() const {
    return count <= maximumPropertyListCount && size <= maximumPropertyListSize &&
           depth <= maximumPropertyListDepth;
  }
};

/// An object's head, decoded: a run of `count` units of `unit` bytes at `start`, which for arrays
/// and dictionaries are references to other objects.
struct Object {
  enum class Kind { Scalar, Text, Array, Dictionary };
  Kind kind = Kind::Scalar;
  std::size_t start = 0;
  std::size_t count = 0;
  std::size_t unit = 1;
};

bool isSoundASCII(std::string_view bytes) {
  return std::ranges::all_of(bytes, [](char c) { return static_cast<signed char>(c) > 0; });
}

bool isSoundUTF16(std::string_view bytes) {
  bool needsLowSurrogate = false;
  for (; bytes.size() >= 2; bytes.remove_prefix(2)) {
    const unsigned unit = static_cast<unsigned>(static_cast<unsigned char>(bytes[0])) << 8 |
                          static_cast<unsigned char>(bytes[1]);
    const bool isLowSurrogate = unit >= 0xDC00 && unit < 0xE000;
    if (unit == 0 || isLowSurrogate != needsLowSurrogate) {
      return false;
    }
    needsLowSurrogate = unit >= 0xD800 && unit < 0xDC00;
  }
  return !needsLowSurrogate;
}

class Checker {
 public:
  explicit Checker(std::string_view bytes) : _bytes(bytes) {}

  bool isSound() {
    if (!readTrailer()) {
      return false;
    }
    _extents.resize(_objectCount);
    const auto top = objectAt(_top);
    const auto extent = extentOf(_top, 1);
    return top && top->kind == Object::Kind::Dictionary && extent && extent->isWithinLimits();
  }

 private:
  /// Big-endian; the range has been checked.
  std::uint64_t number(std::size_t start, std::size_t width) const {
    std::uint64_t value = 0;
    for (const char byte : _bytes.substr(start, width)) {
      value = value << 8 | static_cast<unsigned char>(byte);
    }
    return value;
  }

  bool readTrailer() {
    if (!isBinaryPropertyList(_bytes) || _bytes.size() < header.size() + trailerSize) {
      return false;
    }
    const std::size_t trailer = _bytes.size() - trailerSize;
    _offsetWidth = number(trailer + 6, 1);
    _referenceWidth = number(trailer + 7, 1);
    _objectCount = number(trailer + 8, 8);
    _top = number(trailer + 16, 8);
    _table = number(trailer + 24, 8);
    return isWidth(_offsetWidth) && isWidth(_referenceWidth) && _top < _objectCount &&
           _objectCount <= maximumPropertyListCount && _table >= header.size() &&
           _table <= trailer && _objectCount <= (trailer - _table) / _offsetWidth;
  }

  static bool isWidth(std::size_t width) { return width >= 1 && width <= 8; }

  std::optional<Object> objectAt(std::size_t index) const {
    if (index >= _objectCount) {
      return std::nullopt;
    }
    const std::size_t place = number(_table + index * _offsetWidth, _offsetWidth);
    if (place < header.size() || place >= _table) {
      return std::nullopt;
    }
    const auto marker = static_cast<unsigned char>(_bytes[place]);
    auto object = isCounted(marker) ? countedObject(marker, place) : scalar(marker, place);
    const bool fits = object && object->start <= _table &&
                      object->count <= (_table - object->start) / object->unit;
    return fits ? object : std::nullopt;
  }

  static bool isCounted(unsigned char marker) {
    const int kind = marker >> 4;
    return kind == 0x4 || kind == 0x5 || kind == 0x6 || kind == 0xA || kind == 0xD;
  }

  static std::optional<Object> scalar(unsigned char marker, std::size_t place) {
    Object object{Object::Kind::Scalar, place + 1, 0, 1};
    const unsigned info = marker & 0xFU;
    switch (marker >> 4) {
      case 0x0:
        return info == 8 || info == 9 ? std::optional(object) : std::nullopt;
      case 0x1:
        object.count = std::size_t{1} << info;
        return info <= 4 ? std::optional(object) : std::nullopt;
      case 0x2:
        object.count = std::size_t{1} << info;
        return info == 2 || info == 3 ? std::optional(object) : std::nullopt;
      case 0x3:
        object.count = 8;
        return info == 3 ? std::optional(object) : std::nullopt;
      case 0x8:
        object.count = info + 1;
        return info < 8 ? std::optional(object) : std::nullopt;
      default:
        return std::nullopt;
    }
  }

  std::optional<Object> countedObject(unsigned char marker, std::size_t place) const {
    Object object{Object::Kind::Scalar, place + 1, marker & 0xFU, 1};
    if (object.count == 0xF && !readCount(object)) {
      return std::nullopt;
    }
    switch (marker >> 4) {
      case 0x5:
        object.kind = Object::Kind::Text;
        break;
      case 0x6:
        object.kind = Object::Kind::Text;
        object.unit = 2;
        break;
      case 0xA:
        object.kind = Object::Kind::Array;
        object.unit = _referenceWidth;
        break;
      case 0xD:
        object.kind = Object::Kind::Dictionary;
        object.unit = 2 * _referenceWidth;
        break;
      default:
        break;
    }
    return object;
  }

  /// A count that does not fit beside the marker follows it as an integer object.
  bool readCount(Object& object) const {
    const std::size_t place = object.start;
    if (place >= _table) {
      return false;
    }
    const auto marker = static_cast<unsigned char>(_bytes[place]);
    const std::size_t width = std::size_t{1} << (marker & 0xFU);
    if (marker >> 4 != 0x1 || width > 8 || width > _table - (place + 1)) {
      return false;
    }
    object.count = number(place + 1, width);
    object.start = place + 1 + width;
    return true;
  }

  /// The extent of an object, found once however often it is referred to.
  std::optional<Extent> extentOf(std::size_t index, std::size_t depth) {
    const auto object = objectAt(index);
    if (!object || depth > maximumPropertyListDepth) {
      return std::nullopt;
    }
    // An extent of depth zero is not known yet. An object that holds itself ends at the limit.
    if (_extents[index].depth == 0) {
      const auto extent = measured(*object, depth);
      if (!extent) {
        return std::nullopt;
      }
      _extents[index] = *extent;
    }
    return _extents[index];
  }

  /// The parser takes the bytes of a text as they are, and stops the program at a NUL in a key.
  bool isSoundText(const Object& object) const {
    const std::string_view bytes = _bytes.substr(object.start, object.count * object.unit);
    return object.unit == 1 ? isSoundASCII(bytes) : isSoundUTF16(bytes);
  }

  std::optional<Extent> measured(const Object& object, std::size_t depth) {
    if (object.kind == Object::Kind::Text && !isSoundText(object)) {
      return std::nullopt;
    }
    const bool isContainer =
        object.kind == Object::Kind::Array || object.kind == Object::Kind::Dictionary;
    Extent extent{1, object.count * object.unit, 1};
    const std::size_t references = isContainer ? object.count * (object.unit / _referenceWidth) : 0;
    for (std::size_t place = 0; place < references; ++place) {
      const std::size_t child = number(object.start + place * _referenceWidth, _referenceWidth);
      const bool isKey = object.kind == Object::Kind::Dictionary && place < object.count;
      if (isKey && !isText(child)) {
        return std::nullopt;
      }
      const auto below = extentOf(child, depth + 1);
      if (!below) {
        return std::nullopt;
      }
      extent.count += below->count;
      extent.size += below->size;
      extent.depth = std::max(extent.depth, below->depth + 1);
      if (!extent.isWithinLimits()) {
        return std::nullopt;
      }
    }
    return extent;
  }

  bool isText(std::size_t index) const {
    const auto object = objectAt(index);
    return object && object->kind == Object::Kind::Text;
  }

  std::string_view _bytes;
  std::size_t _offsetWidth = 0;
  std::size_t _referenceWidth = 0;
  std::size_t _objectCount = 0;
  std::size_t _top = 0;
  std::size_t _table = 0;
  std::vector<Extent> _extents;
};

}  // namespace

bool isBinaryPropertyList(std::string_view bytes) { return bytes.starts_with(header); }

bool isSoundBinaryPropertyList(std::string_view bytes) { return Checker(bytes).isSound(); }

std::string settingBinaryEntry(std::string_view bytes, const std::string& key,
                               const std::optional<PropertyList>& value) {
  const PropertyListNode node = nodeOfBinary(bytes);
  if (!node) {
    throw PropertyListError("The file is not a property list.");
  }
  if (value) {
    setEntryOfNode(node.get(), key, *value);
  } else {
    plist_dict_remove_item(node.get(), key.c_str());
  }
  return binaryOfNode(node.get());
}

}  // namespace quennel
