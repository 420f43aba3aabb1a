#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/values/PropertyList.h"

namespace quennel {

/// Whether the bytes start as a property list in the binary form does.
bool isBinaryPropertyList(std::string_view bytes);

/// A look into a binary property list without unfolding it: its objects stand in a table and refer
/// to each other by their places there, as often as they like, so a few hundred bytes can describe
/// a tree that fills the memory. Here every object is read only when it is asked for. Nothing about
/// the bytes is taken on trust.
///
/// The bytes are not owned and outlive this object.
class BinaryPropertyList {
 public:
  /// An object's place in the table. Any number may be asked for; most then have no object.
  using Place = std::uint64_t;
  using Entry = std::pair<Place, Place>;

  enum class Kind {
    Null,
    Boolean,
    Integer,
    Real,
    Date,
    Data,
    ASCIIText,
    UTF16Text,
    UID,
    Array,
    Dictionary
  };

  static std::optional<BinaryPropertyList> create(std::string_view bytes);

  Place root() const { return _root; }
  /// How many objects the table has.
  std::uint64_t count() const { return _count; }

  /// The kind of the object at `place`; nothing where there is none that lies within the bytes.
  std::optional<Kind> kindAt(Place place) const;
  /// All bytes of the object, which in an array or a dictionary are places.
  std::optional<std::string_view> bytesAt(Place place) const;

  /// The object at `place` if it is of that kind, else nothing.
  std::optional<std::vector<Place>> arrayAt(Place place) const;
  /// The places of the keys and of their values.
  std::optional<std::vector<Entry>> dictionaryAt(Place place) const;
  /// An archive's reference to one of its own objects.
  std::optional<std::uint64_t> uidAt(Place place) const;
  /// Only for a text that is one: no NUL in it, and nothing that its encoding does not allow.
  std::optional<std::string> textAt(Place place) const;
  /// Any object but an array, a dictionary, a reference and a null. A number that does not fit is
  /// held at the limits.
  std::optional<PropertyList> scalarAt(Place place) const;

  /// The value under `key` in the dictionary at `place`.
  std::optional<Place> valueForKey(Place place, std::string_view key) const;

 private:
  struct Object {
    Kind kind;
    /// Where its first byte is, which says its kind and length.
    std::size_t start;
    std::size_t contents;
    /// How many units of `unit` bytes the contents are.
    std::size_t count;
    std::size_t unit;
  };

  explicit BinaryPropertyList(std::string_view bytes) : _bytes(bytes) {}

  bool readTrailer();
  std::optional<std::uint64_t> number(std::size_t offset, std::size_t size) const;
  std::optional<Object> objectAt(Place place) const;
  std::optional<Object> objectOfMarker(unsigned char marker, std::size_t start) const;
  bool readCount(Object& object) const;
  std::string_view contentsOf(const Object& object) const;
  std::vector<Place> placesOf(const Object& object) const;
  PropertyList integerOf(const Object& object) const;
  PropertyList realOf(const Object& object) const;

  std::string_view _bytes;
  std::size_t _offsetSize = 0;
  std::size_t _placeSize = 0;
  std::uint64_t _count = 0;
  Place _root = 0;
  std::size_t _offsets = 0;
};

}  // namespace quennel
