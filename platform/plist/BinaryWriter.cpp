#include "platform/plist/BinaryWriter.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/plist/BinaryPropertyList.h"
#include "platform/plist/BinaryReader.h"
#include "platform/plist/PropertyListDate.h"
#include "platform/plist/PropertyListError.h"
#include "platform/plist/StorableText.h"
#include "platform/plist/Unicode.h"

namespace quennel {
namespace {

using Place = BinaryPropertyList::Place;

constexpr unsigned char uidMarker = 0x80;
constexpr unsigned char arrayMarker = 0xA0;
constexpr unsigned char dictionaryMarker = 0xD0;

void appendBigEndian(std::string& bytes, std::uint64_t number, std::size_t size) {
  for (std::size_t left = size; left-- > 0;) {
    bytes.push_back(static_cast<char>(number >> (8 * left) & 0xFF));
  }
}

/// How many bytes a number needs, of those that the form has: 1, 2, 4 or 8.
std::size_t sizeFor(std::uint64_t number) {
  std::size_t size = 1;
  while (size < 8 && number >> (8 * size) != 0) {
    size *= 2;
  }
  return size;
}

void appendInteger(std::string& bytes, std::uint64_t number, std::size_t size) {
  bytes.push_back(static_cast<char>(0x10U | static_cast<unsigned>(std::countr_zero(size))));
  appendBigEndian(bytes, number, size);
}

/// The first byte of an object with that many units, and its length where that does not fit in.
std::string head(unsigned marker, std::size_t count) {
  constexpr std::size_t lengthFollows = 0xF;
  std::string bytes(1, static_cast<char>(marker | std::min(count, lengthFollows)));
  if (count >= lengthFollows) {
    appendInteger(bytes, count, sizeFor(count));
  }
  return bytes;
}

std::string bytesOfInteger(std::int64_t number) {
  std::string bytes;
  const auto bits = static_cast<std::uint64_t>(number);
  // Only the longest of these forms has a sign.
  appendInteger(bytes, bits, number < 0 ? 8 : sizeFor(bits));
  return bytes;
}

std::string bytesOfLargeInteger(std::uint64_t number) {
  std::string bytes = "\x14";
  appendBigEndian(bytes, 0, 8);
  appendBigEndian(bytes, number, 8);
  return bytes;
}

std::string bytesOfDouble(char marker, double number) {
  std::string bytes(1, marker);
  appendBigEndian(bytes, std::bit_cast<std::uint64_t>(number), 8);
  return bytes;
}

std::string bytesOfText(const std::string& text) {
  const bool isASCII = std::ranges::all_of(
      storable(text), [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
  if (isASCII) {
    return head(0x50, text.size()) + text;
  }
  const std::string units = utf16OfUTF8(text);
  return head(0x60, units.size() / 2) + units;
}

/// The bytes of a reference within an archive, if the dictionary stands for one.
std::optional<std::string> bytesOfReference(const PropertyList::Dictionary& dictionary) {
  if (dictionary.size() != 1 || dictionary.begin()->first != archiveReferenceKey) {
    return std::nullopt;
  }
  const std::int64_t* const number = dictionary.begin()->second.integer();
  if (!number || !std::in_range<std::uint32_t>(*number)) {
    return std::nullopt;
  }
  const std::size_t size = sizeFor(static_cast<std::uint64_t>(*number));
  std::string bytes(1, static_cast<char>(uidMarker | (size - 1)));
  appendBigEndian(bytes, static_cast<std::uint64_t>(*number), size);
  return bytes;
}

/// Bytes for what is neither an array nor a dictionary.
std::string bytesOfScalar(const PropertyList& value) {
  if (const bool* const boolean = value.boolean()) {
    return *boolean ? "\x09" : "\x08";
  }
  if (const std::int64_t* const number = value.integer()) {
    return bytesOfInteger(*number);
  }
  if (const std::uint64_t* const number = value.largeInteger()) {
    return bytesOfLargeInteger(*number);
  }
  if (const double* const number = value.real()) {
    return bytesOfDouble('\x23', *number);
  }
  if (const PropertyList::Date* const date = value.date()) {
    return bytesOfDouble('\x33', propertyListSecondsOfDate(*date));
  }
  if (const PropertyList::Data* const data = value.data()) {
    return head(0x40, data->bytes.size()) + data->bytes;
  }
  return bytesOfText(*value.string());
}

/// Collects objects, equal ones that hold no others once, and writes the file.
class Writer {
 public:
  using Index = std::size_t;

  Index add(const PropertyList& value) {
    if (const auto* const array = value.array()) {
      return addArray(*array);
    }
    if (const auto* const dictionary = value.dictionary()) {
      return addDictionary(*dictionary);
    }
    return addScalar(bytesOfScalar(value));
  }

  Index addText(const std::string& text) { return addScalar(bytesOfText(text)); }

  /// The object as it stands in another list.
  Index add(const BinaryPropertyList& list, Place place) {
    const auto known = _copies.find(place);
    if (known != _copies.end()) {
      return known->second;
    }
    const Index index = copy(list, place);
    _copies.emplace(place, index);
    return index;
  }

  Index addContainer(unsigned char marker, std::size_t count, std::vector<Index> references) {
    _objects.push_back({head(marker, count), std::move(references)});
    return _objects.size() - 1;
  }

  std::string write(Index top) const {
    const std::size_t placeSize = sizeFor(_objects.size());
    std::string bytes = "bplist00";
    std::vector<std::size_t> offsets;
    for (const Object& object : _objects) {
      offsets.push_back(bytes.size());
      bytes += object.bytes;
      for (const Index reference : object.references) {
        appendBigEndian(bytes, reference, placeSize);
      }
    }
    const std::size_t table = bytes.size();
    const std::size_t offsetSize = sizeFor(table);
    for (const std::size_t offset : offsets) {
      appendBigEndian(bytes, offset, offsetSize);
    }
    bytes.append(6, '\0');
    appendBigEndian(bytes, offsetSize, 1);
    appendBigEndian(bytes, placeSize, 1);
    appendBigEndian(bytes, _objects.size(), 8);
    appendBigEndian(bytes, top, 8);
    appendBigEndian(bytes, table, 8);
    return bytes;
  }

 private:
  struct Object {
    std::string bytes;
    std::vector<Index> references;
  };

  Index addScalar(std::string bytes) {
    const auto [known, isNew] = _scalars.try_emplace(bytes, _objects.size());
    if (isNew) {
      _objects.push_back({std::move(bytes), {}});
    }
    return known->second;
  }

  Index addArray(const PropertyList::Array& array) {
    std::vector<Index> references;
    for (const PropertyList& element : array) {
      references.push_back(add(element));
    }
    return addContainer(arrayMarker, array.size(), std::move(references));
  }

  Index addDictionary(const PropertyList::Dictionary& dictionary) {
    if (auto reference = bytesOfReference(dictionary)) {
      return addScalar(*std::move(reference));
    }
    std::vector<Index> references;
    for (const auto& [key, value] : dictionary) {
      references.push_back(addText(key));
    }
    for (const auto& [key, value] : dictionary) {
      references.push_back(add(value));
    }
    return addContainer(dictionaryMarker, dictionary.size(), std::move(references));
  }

  Index copy(const BinaryPropertyList& list, Place place) {
    if (const auto elements = list.arrayAt(place)) {
      std::vector<Index> references;
      for (const Place element : *elements) {
        references.push_back(add(list, element));
      }
      return addContainer(arrayMarker, elements->size(), std::move(references));
    }
    if (const auto entries = list.dictionaryAt(place)) {
      std::vector<Index> references;
      for (const auto& entry : *entries) {
        references.push_back(add(list, entry.first));
      }
      for (const auto& entry : *entries) {
        references.push_back(add(list, entry.second));
      }
      return addContainer(dictionaryMarker, entries->size(), std::move(references));
    }
    return addScalar(std::string(list.bytesAt(place).value_or("")));
  }

  std::vector<Object> _objects;
  std::unordered_map<std::string, Index> _scalars;
  std::unordered_map<Place, Index> _copies;
};

}  // namespace

std::string settingBinaryEntry(std::string_view bytes, const std::string& key,
                               const std::optional<PropertyList>& value) {
  const auto list = BinaryPropertyList::create(bytes);
  const auto entries = list ? list->dictionaryAt(list->root()) : std::nullopt;
  if (!entries) {
    throw PropertyListError("The file is not a property list.");
  }
  Writer writer;
  std::vector<Writer::Index> keys;
  std::vector<Writer::Index> values;
  for (const auto& [name, object] : *entries) {
    if (list->textAt(name) != key) {
      keys.push_back(writer.add(*list, name));
      values.push_back(writer.add(*list, object));
    }
  }
  if (value) {
    keys.push_back(writer.addText(key));
    values.push_back(writer.add(*value));
  }
  const std::size_t count = keys.size();
  keys.insert(keys.end(), values.begin(), values.end());
  return writer.write(writer.addContainer(dictionaryMarker, count, std::move(keys)));
}

}  // namespace quennel
