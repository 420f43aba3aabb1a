#include "platform/values/BinaryPropertyList.h"

#include <algorithm>
#include <bit>
#include <string>

namespace quennel {
namespace {

constexpr std::string_view magic = "bplist00";
constexpr std::size_t trailerSize = 32;

constexpr unsigned simpleKind = 0x0;
constexpr unsigned integerKind = 0x1;
constexpr unsigned realKind = 0x2;
constexpr unsigned asciiKind = 0x5;
constexpr unsigned uidKind = 0x8;
constexpr unsigned arrayKind = 0xA;
constexpr unsigned dictionaryKind = 0xD;

constexpr unsigned falseValue = 0x8;
constexpr unsigned trueValue = 0x9;
constexpr unsigned lengthFollows = 0xF;

bool isASCII(std::string_view text) {
  return std::ranges::all_of(text,
                             [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
}

}  // namespace

std::optional<BinaryPropertyList> BinaryPropertyList::create(std::string_view bytes) {
  BinaryPropertyList list(bytes);
  const bool hasFrame = bytes.size() >= magic.size() + trailerSize && bytes.starts_with(magic);
  return hasFrame && list.readTrailer() ? std::optional(list) : std::nullopt;
}

bool BinaryPropertyList::readTrailer() {
  const std::size_t trailer = _bytes.size() - trailerSize;
  _offsetSize = static_cast<unsigned char>(_bytes[trailer + 6]);
  _placeSize = static_cast<unsigned char>(_bytes[trailer + 7]);
  _count = number(trailer + 8, 8).value_or(0);
  _root = number(trailer + 16, 8).value_or(0);
  _offsets = number(trailer + 24, 8).value_or(0);
  return _offsetSize >= 1 && _offsetSize <= 8 && _placeSize >= 1 && _placeSize <= 8 &&
         _offsets <= trailer && _count <= (trailer - _offsets) / _offsetSize;
}

/// The big-endian number of `size` bytes, at most 8.
std::optional<std::uint64_t> BinaryPropertyList::number(std::size_t offset,
                                                        std::size_t size) const {
  if (size > 8 || offset > _bytes.size() || size > _bytes.size() - offset) {
    return std::nullopt;
  }
  std::uint64_t value = 0;
  for (const char byte : _bytes.substr(offset, size)) {
    value = (value << 8) | static_cast<unsigned char>(byte);
  }
  return value;
}

std::optional<BinaryPropertyList::Object> BinaryPropertyList::objectAt(Place place) const {
  if (place >= _count) {
    return std::nullopt;
  }
  const auto offset = number(static_cast<std::size_t>(_offsets + place * _offsetSize), _offsetSize);
  if (!offset || *offset >= _bytes.size()) {
    return std::nullopt;
  }
  const auto first = static_cast<unsigned char>(_bytes[static_cast<std::size_t>(*offset)]);
  return Object{static_cast<unsigned>(first) >> 4, first & 0xFU,
                static_cast<std::size_t>(*offset) + 1};
}

/// How many elements the object has; moves `contents` to the first of them.
std::optional<std::size_t> BinaryPropertyList::countOf(Object& object) const {
  if (object.low != lengthFollows) {
    return object.low;
  }
  const auto first = number(object.contents, 1);
  if (!first || *first >> 4 != integerKind || (*first & 0xFU) > 3) {
    return std::nullopt;
  }
  const std::size_t size = std::size_t{1} << (*first & 0xFU);
  const auto count = number(object.contents + 1, size);
  object.contents += 1 + size;
  return count && *count <= _bytes.size() ? std::optional(static_cast<std::size_t>(*count))
                                          : std::nullopt;
}

/// The places that an array or a dictionary lists; a dictionary all keys first, then all values.
std::optional<std::vector<BinaryPropertyList::Place>> BinaryPropertyList::placesAt(
    Place place, unsigned kind) const {
  auto object = objectAt(place);
  if (!object || object->kind != kind) {
    return std::nullopt;
  }
  const auto count = countOf(*object);
  const std::size_t total = count.value_or(0) * (kind == dictionaryKind ? 2 : 1);
  if (!count || object->contents > _bytes.size() ||
      total > (_bytes.size() - object->contents) / _placeSize) {
    return std::nullopt;
  }
  std::vector<Place> places;
  places.reserve(total);
  for (std::size_t index = 0; index < total; ++index) {
    places.push_back(*number(object->contents + index * _placeSize, _placeSize));
  }
  return places;
}

std::optional<std::vector<BinaryPropertyList::Place>> BinaryPropertyList::arrayAt(
    Place place) const {
  return placesAt(place, arrayKind);
}

std::optional<std::vector<BinaryPropertyList::Entry>> BinaryPropertyList::dictionaryAt(
    Place place) const {
  const auto places = placesAt(place, dictionaryKind);
  if (!places) {
    return std::nullopt;
  }
  const std::size_t count = places->size() / 2;
  std::vector<Entry> entries;
  entries.reserve(count);
  for (std::size_t index = 0; index < count; ++index) {
    entries.emplace_back((*places)[index], (*places)[count + index]);
  }
  return entries;
}

std::optional<std::uint64_t> BinaryPropertyList::uidAt(Place place) const {
  const auto object = objectAt(place);
  return object && object->kind == uidKind ? number(object->contents, object->low + 1)
                                           : std::nullopt;
}

std::optional<std::string_view> BinaryPropertyList::textAt(Place place) const {
  auto object = objectAt(place);
  if (!object || object->kind != asciiKind) {
    return std::nullopt;
  }
  const auto length = countOf(*object);
  if (!length || object->contents > _bytes.size() || *length > _bytes.size() - object->contents) {
    return std::nullopt;
  }
  const std::string_view text = _bytes.substr(object->contents, *length);
  return isASCII(text) ? std::optional(text) : std::nullopt;
}

std::optional<PropertyList> BinaryPropertyList::integerOf(const Object& object) const {
  const auto value =
      object.low <= 3 ? number(object.contents, std::size_t{1} << object.low) : std::nullopt;
  // Only the longest form has a sign.
  return value ? std::optional<PropertyList>(static_cast<std::int64_t>(*value)) : std::nullopt;
}

std::optional<PropertyList> BinaryPropertyList::realOf(const Object& object) const {
  const std::size_t size = std::size_t{1} << object.low;
  const auto bits = size == 4 || size == 8 ? number(object.contents, size) : std::nullopt;
  if (!bits) {
    return std::nullopt;
  }
  return size == 8 ? std::bit_cast<double>(*bits)
                   : double{std::bit_cast<float>(static_cast<std::uint32_t>(*bits))};
}

std::optional<PropertyList> BinaryPropertyList::scalarAt(Place place) const {
  const auto object = objectAt(place);
  if (!object) {
    return std::nullopt;
  }
  switch (object->kind) {
    case simpleKind:
      return object->low == trueValue || object->low == falseValue
                 ? std::optional<PropertyList>(object->low == trueValue)
                 : std::nullopt;
    case integerKind:
      return integerOf(*object);
    case realKind:
      return realOf(*object);
    default: {
      const auto text = textAt(place);
      return text ? std::optional<PropertyList>(std::string(*text)) : std::nullopt;
    }
  }
}

std::optional<BinaryPropertyList::Place> BinaryPropertyList::valueForKey(
    Place place, std::string_view key) const {
  const auto entries = dictionaryAt(place);
  if (!entries) {
    return std::nullopt;
  }
  const auto entry = std::ranges::find_if(
      *entries, [&](const Entry& candidate) { return textAt(candidate.first) == key; });
  return entry == entries->end() ? std::nullopt : std::optional(entry->second);
}

}  // namespace quennel
