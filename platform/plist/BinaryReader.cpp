#include "platform/plist/BinaryReader.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "platform/plist/BinaryPropertyList.h"
#include "platform/plist/PropertyListLimits.h"

namespace quennel {
namespace {

using Place = BinaryPropertyList::Place;
using Kind = BinaryPropertyList::Kind;

/// An object unfolded, once however often it is referred to.
struct Unfolded {
  /// None for a null.
  std::optional<PropertyList> value;
  // What the tree below it amounts to when every reference in it is followed.
  std::size_t count = 1;
  std::size_t size = 0;
  std::size_t depth = 1;
};

class Unfolding {
 public:
  explicit Unfolding(const BinaryPropertyList& list) : _list(list) {
    _objects.resize(static_cast<std::size_t>(list.count()));
  }

  /// Null when the object or one below it is damaged, holds itself, or is beyond the limits.
  /// `depth` is its own, from the root.
  const Unfolded* objectAt(Place place, std::size_t depth) {
    const auto kind = _list.kindAt(place);
    // An object that holds itself ends at the limit.
    if (!kind || depth > maximumPropertyListDepth) {
      return nullptr;
    }
    auto& known = _objects[static_cast<std::size_t>(place)];
    if (!known) {
      auto unfolded = unfold(place, *kind, depth);
      if (!unfolded) {
        return nullptr;
      }
      known = std::move(unfolded);
    }
    return &*known;
  }

 private:
  std::optional<Unfolded> unfold(Place place, Kind kind, std::size_t depth) {
    switch (kind) {
      case Kind::Null:
        return Unfolded{};
      case Kind::UID: {
        PropertyList::Dictionary reference;
        reference.emplace(archiveReferenceKey, _list.uidAt(place).value_or(0));
        return Unfolded{std::move(reference)};
      }
      case Kind::Array:
        return arrayAt(place, depth);
      case Kind::Dictionary:
        return dictionaryAt(place, depth);
      default:
        return scalarAt(place);
    }
  }

  std::optional<Unfolded> scalarAt(Place place) const {
    auto value = _list.scalarAt(place);
    return value ? std::optional(Unfolded{std::move(value), 1, _list.bytesAt(place)->size()})
                 : std::nullopt;
  }

  std::optional<Unfolded> arrayAt(Place place, std::size_t depth) {
    Unfolded result;
    PropertyList::Array array;
    const auto elements = _list.arrayAt(place).value_or(std::vector<Place>());
    for (const Place element : elements) {
      const Unfolded* const object = objectAt(element, depth + 1);
      if (!object || !add(result, *object)) {
        return std::nullopt;
      }
      if (object->value) {
        array.push_back(*object->value);
      }
    }
    result.value = std::move(array);
    return result;
  }

  std::optional<Unfolded> dictionaryAt(Place place, std::size_t depth) {
    Unfolded result;
    PropertyList::Dictionary dictionary;
    const auto entries =
        _list.dictionaryAt(place).value_or(std::vector<BinaryPropertyList::Entry>());
    for (const auto& [key, value] : entries) {
      const Unfolded* const name = objectAt(key, depth + 1);
      if (!name || !name->value || !name->value->string() || !add(result, *name)) {
        return std::nullopt;
      }
      const Unfolded* const object = objectAt(value, depth + 1);
      if (!object || !add(result, *object)) {
        return std::nullopt;
      }
      if (object->value) {
        dictionary.insert_or_assign(*name->value->string(), *object->value);
      }
    }
    result.value = std::move(dictionary);
    return result;
  }

  /// Answers whether the sum is within the limits.
  static bool add(Unfolded& container, const Unfolded& object) {
    container.count += object.count;
    container.size += object.size + sizeof(Place);
    container.depth = std::max(container.depth, object.depth + 1);
    return container.count <= maximumPropertyListCount &&
           container.size <= maximumPropertyListSize && container.depth <= maximumPropertyListDepth;
  }

  const BinaryPropertyList& _list;
  std::vector<std::optional<Unfolded>> _objects;
};

}  // namespace

std::optional<PropertyList::Dictionary> dictionaryOfBinary(std::string_view bytes) {
  const auto list = BinaryPropertyList::create(bytes);
  if (!list || list->count() > maximumPropertyListCount ||
      list->kindAt(list->root()) != Kind::Dictionary) {
    return std::nullopt;
  }
  Unfolding unfolding(*list);
  const Unfolded* const top = unfolding.objectAt(list->root(), 1);
  return top ? std::optional(*top->value->dictionary()) : std::nullopt;
}

}  // namespace quennel
