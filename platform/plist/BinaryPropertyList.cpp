#include "platform/plist/BinaryPropertyList.h"

#include <algorithm>
#include <bit>
#include <limits>

#include "platform/plist/PropertyListDate.h"
#include "platform/plist/Unicode.h"

namespace quennel {
namespace {

constexpr std::string_view magic = "bplist00";
constexpr std::size_t trailerSize = 32;
/// Stands in place of a length and says that the length follows as an integer.
constexpr unsigned lengthFollows = 0xF;

using Kind = BinaryPropertyList::Kind;

/// The kind that the upper half of an object's first byte names, and the lengths that the lower
/// half may then have.
struct KindOfMarker {
  unsigned upper;
  unsigned leastLower;
  unsigned mostLower;
  Kind kind;
};

constexpr KindOfMarker kinds[] = {
    {0x0, 0x0, 0x0, Kind::Null},      {0x0, 0x8, 0x9, Kind::Boolean},
    {0x1, 0x0, 0x4, Kind::Integer},   {0x2, 0x2, 0x3, Kind::Real},
    {0x3, 0x3, 0x3, Kind::Date},      {0x4, 0x0, 0xF, Kind::Data},
    {0x5, 0x0, 0xF, Kind::ASCIIText}, {0x6, 0x0, 0xF, Kind::UTF16Text},
    {0x8, 0x0, 0x7, Kind::UID},       {0xA, 0x0, 0xF, Kind::Array},
    {0xD, 0x0, 0xF, Kind::Dictionary}};

const KindOfMarker* kindOfMarker(unsigned char marker) {
  const unsigned upper = marker >> 4U;
  const unsigned lower = marker & 0xFU;
  const auto* const found = std::ranges::find_if(kinds, [&](const KindOfMarker& kind) {
    return kind.upper == upper && lower >= kind.leastLower && lower <= kind.mostLower;
  });
  return found == std::end(kinds) ? nullptr : found;
}

/// Whether the length of such an object is its own, not one of a few that its kind allows.
bool isCounted(Kind kind) {
  return kind == Kind::Data || kind == Kind::ASCIIText || kind == Kind::UTF16Text ||
         kind == Kind::Array || kind == Kind::Dictionary;
}

bool isASCII(std::string_view text) {
  return std::ranges::all_of(text, [](char c) { return static_cast<signed char>(c) > 0; });
}

std::uint64_t bigEndian(std::string_view bytes) {
  std::uint64_t value = 0;
  for (const char byte : bytes) {
    value = value << 8 | static_cast<unsigned char>(byte);
  }
  return value;
}

}  // namespace

bool isBinaryPropertyList(std::string_view bytes) { return bytes.starts_with(magic); }

std::optional<BinaryPropertyList> BinaryPropertyList::create(std::string_view bytes) {
  BinaryPropertyList list(bytes);
  const bool hasFrame = bytes.size() >= magic.size() + trailerSize && isBinaryPropertyList(bytes);
  return hasFrame && list.readTrailer() ? std::optional(list) : std::nullopt;
}

bool BinaryPropertyList::readTrailer() {
  const std::size_t trailer = _bytes.size() - trailerSize;
  _offsetSize = static_cast<unsigned char>(_bytes[trailer + 6]);
  _placeSize = static_cast<unsigned char>(_bytes[trailer + 7]);
  _count = number(trailer + 8, 8).value_or(0);
  _root = number(trailer + 16, 8).value_or(0);
  _offsets = static_cast<std::size_t>(number(trailer + 24, 8).value_or(0));
  return _offsetSize >= 1 && _offsetSize <= 8 && _placeSize >= 1 && _placeSize <= 8 &&
         _offsets >= magic.size() && _offsets <= trailer &&
         _count <= (trailer - _offsets) / _offsetSize;
}

/// The big-endian number of `size` bytes, at most 8.
std::optional<std::uint64_t> BinaryPropertyList::number(std::size_t offset,
                                                        std::size_t size) const {
  const bool fits = size <= 8 && offset <= _bytes.size() && size <= _bytes.size() - offset;
  return fits ? std::optional(bigEndian(_bytes.substr(offset, size))) : std::nullopt;
}

std::optional<BinaryPropertyList::Object> BinaryPropertyList::objectAt(Place place) const {
  if (place >= _count) {
    return std::nullopt;
  }
  const auto start = static_cast<std::size_t>(
      number(_offsets + static_cast<std::size_t>(place) * _offsetSize, _offsetSize).value_or(0));
  if (start < magic.size() || start >= _offsets) {
    return std::nullopt;
  }
  auto object = objectOfMarker(static_cast<unsigned char>(_bytes[start]), start);
  const bool fits = object && object->contents <= _offsets &&
                    object->count <= (_offsets - object->contents) / object->unit;
  return fits ? object : std::nullopt;
}

std::optional<BinaryPropertyList::Object> BinaryPropertyList::objectOfMarker(
    unsigned char marker, std::size_t start) const {
  const KindOfMarker* const found = kindOfMarker(marker);
  if (!found) {
    return std::nullopt;
  }
  const unsigned lower = marker & 0xFU;
  Object object{found->kind, start, start + 1, lower, 1};
  switch (found->kind) {
    case Kind::Null:
    case Kind::Boolean:
      object.count = 0;
      break;
    case Kind::UID:
      object.count = std::size_t{lower} + 1;
      break;
    case Kind::UTF16Text:
      object.unit = 2;
      break;
    case Kind::Array:
      object.unit = _placeSize;
      break;
    case Kind::Dictionary:
      object.unit = 2 * _placeSize;
      break;
    case Kind::Data:
    case Kind::ASCIIText:
      break;
    default:
      object.count = std::size_t{1} << lower;
  }
  const bool isComplete = !isCounted(found->kind) || lower != lengthFollows || readCount(object);
  return isComplete ? std::optional(object) : std::nullopt;
}

/// Reads the length that follows the first byte, and moves `contents` behind it.
bool BinaryPropertyList::readCount(Object& object) const {
  const auto marker = static_cast<unsigned char>(number(object.contents, 1).value_or(0));
  const KindOfMarker* const kind = kindOfMarker(marker);
  const std::size_t size = std::size_t{1} << (marker & 0xFU);
  const auto count =
      kind && kind->kind == Kind::Integer ? number(object.contents + 1, size) : std::nullopt;
  object.contents += 1 + size;
  object.count = static_cast<std::size_t>(count.value_or(0));
  return count.has_value();
}

std::string_view BinaryPropertyList::contentsOf(const Object& object) const {
  return _bytes.substr(object.contents, object.count * object.unit);
}

std::optional<BinaryPropertyList::Kind> BinaryPropertyList::kindAt(Place place) const {
  const auto object = objectAt(place);
  return object ? std::optional(object->kind) : std::nullopt;
}

std::optional<std::string_view> BinaryPropertyList::bytesAt(Place place) const {
  const auto object = objectAt(place);
  if (!object) {
    return std::nullopt;
  }
  const std::size_t end = object->contents + object->count * object->unit;
  return _bytes.substr(object->start, end - object->start);
}

/// The places that an array or a dictionary lists; a dictionary all keys first, then all values.
std::vector<BinaryPropertyList::Place> BinaryPropertyList::placesOf(const Object& object) const {
  const std::string_view contents = contentsOf(object);
  std::vector<Place> places;
  places.reserve(contents.size() / _placeSize);
  for (std::size_t offset = 0; offset < contents.size(); offset += _placeSize) {
    places.push_back(bigEndian(contents.substr(offset, _placeSize)));
  }
  return places;
}

std::optional<std::vector<BinaryPropertyList::Place>> BinaryPropertyList::arrayAt(
    Place place) const {
  const auto object = objectAt(place);
  return object && object->kind == Kind::Array ? std::optional(placesOf(*object)) : std::nullopt;
}

std::optional<std::vector<BinaryPropertyList::Entry>> BinaryPropertyList::dictionaryAt(
    Place place) const {
  const auto object = objectAt(place);
  if (!object || object->kind != Kind::Dictionary) {
    return std::nullopt;
  }
  const auto places = placesOf(*object);
  std::vector<Entry> entries;
  entries.reserve(object->count);
  for (std::size_t index = 0; index < object->count; ++index) {
    entries.emplace_back(places[index], places[object->count + index]);
  }
  return entries;
}

std::optional<std::uint64_t> BinaryPropertyList::uidAt(Place place) const {
  const auto object = objectAt(place);
  return object && object->kind == Kind::UID ? std::optional(bigEndian(contentsOf(*object)))
                                             : std::nullopt;
}

std::optional<std::string> BinaryPropertyList::textAt(Place place) const {
  const auto object = objectAt(place);
  if (!object) {
    return std::nullopt;
  }
  const std::string_view contents = contentsOf(*object);
  if (object->kind == Kind::ASCIIText) {
    return isASCII(contents) ? std::optional(std::string(contents)) : std::nullopt;
  }
  auto text = object->kind == Kind::UTF16Text ? utf8OfUTF16(contents) : std::nullopt;
  return text && text->find('\0') == std::string::npos ? text : std::nullopt;
}

PropertyList BinaryPropertyList::integerOf(const Object& object) const {
  const std::string_view contents = contentsOf(object);
  if (contents.size() < 8) {
    return static_cast<std::int64_t>(bigEndian(contents));
  }
  const std::uint64_t low = bigEndian(contents.substr(contents.size() - 8));
  if (contents.size() == 8) {
    return static_cast<std::int64_t>(low);
  }
  const auto high = static_cast<std::int64_t>(bigEndian(contents.substr(0, 8)));
  if (high >= 0) {
    return high == 0 ? low : std::numeric_limits<std::uint64_t>::max();
  }
  const auto number = static_cast<std::int64_t>(low);
  return high == -1 && number < 0 ? number : std::numeric_limits<std::int64_t>::min();
}

PropertyList BinaryPropertyList::realOf(const Object& object) const {
  const std::uint64_t bits = bigEndian(contentsOf(object));
  return object.count == 8 ? std::bit_cast<double>(bits)
                           : double{std::bit_cast<float>(static_cast<std::uint32_t>(bits))};
}

std::optional<PropertyList> BinaryPropertyList::scalarAt(Place place) const {
  const auto object = objectAt(place);
  if (!object) {
    return std::nullopt;
  }
  switch (object->kind) {
    case Kind::Boolean:
      return PropertyList(_bytes[object->start] == '\x09');
    case Kind::Integer:
      return integerOf(*object);
    case Kind::Real:
      return realOf(*object);
    case Kind::Date:
      return PropertyList(
          dateOfPropertyListSeconds(std::bit_cast<double>(bigEndian(contentsOf(*object)))));
    case Kind::Data:
      return PropertyList(PropertyList::Data{std::string(contentsOf(*object))});
    case Kind::ASCIIText:
    case Kind::UTF16Text: {
      auto text = textAt(place);
      return text ? std::optional<PropertyList>(*std::move(text)) : std::nullopt;
    }
    default:
      return std::nullopt;
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
