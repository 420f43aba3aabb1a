#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/values/PropertyList.h"

namespace quennel {

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

  static std::optional<BinaryPropertyList> create(std::string_view bytes);

  Place root() const { return _root; }

  /// The object at `place` if it is of that kind, else nothing.
  std::optional<std::vector<Place>> arrayAt(Place place) const;
  /// The places of the keys and of their values.
  std::optional<std::vector<Entry>> dictionaryAt(Place place) const;
  /// An archive's reference to one of its own objects.
  std::optional<std::uint64_t> uidAt(Place place) const;
  /// Only for texts in ASCII.
  std::optional<std::string_view> textAt(Place place) const;
  /// A text in ASCII, a boolean or a number of up to 64 bits.
  std::optional<PropertyList> scalarAt(Place place) const;

  /// The value under `key` in the dictionary at `place`.
  std::optional<Place> valueForKey(Place place, std::string_view key) const;

 private:
  /// The first byte of an object says its kind in the upper half; the lower half is its length, or
  /// tells that the length follows.
  struct Object {
    unsigned kind;
    unsigned low;
    std::size_t contents;
  };

  explicit BinaryPropertyList(std::string_view bytes) : _bytes(bytes) {}

  bool readTrailer();
  std::optional<std::uint64_t> number(std::size_t offset, std::size_t size) const;
  std::optional<Object> objectAt(Place place) const;
  std::optional<std::size_t> countOf(Object& object) const;
  std::optional<std::vector<Place>> placesAt(Place place, unsigned kind) const;
  std::optional<PropertyList> realOf(const Object& object) const;
  std::optional<PropertyList> integerOf(const Object& object) const;

  std::string_view _bytes;
  std::size_t _offsetSize = 0;
  std::size_t _placeSize = 0;
  std::uint64_t _count = 0;
  Place _root = 0;
  std::uint64_t _offsets = 0;
};

}  // namespace quennel
