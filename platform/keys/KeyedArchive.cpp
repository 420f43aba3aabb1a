#include "platform/keys/KeyedArchive.h"

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "platform/plist/BinaryPropertyList.h"

namespace quennel {
namespace {

using Place = BinaryPropertyList::Place;
using Entry = BinaryPropertyList::Entry;

constexpr std::size_t largestArchive = 16384;
constexpr std::size_t mostFields = 64;

/// The objects of one archive.
class Archive {
 public:
  explicit Archive(const BinaryPropertyList& list) : _list(list) {}

  /// False when the property list is no archive.
  bool open() {
    const auto archiver = _list.valueForKey(_list.root(), "$archiver");
    const auto objects = _list.valueForKey(_list.root(), "$objects");
    if (!archiver || _list.textAt(*archiver) != "NSKeyedArchiver" || !objects) {
      return false;
    }
    auto places = _list.arrayAt(*objects);
    _objects = places ? std::move(*places) : std::vector<Place>();
    return places.has_value();
  }

  std::optional<PropertyList> root() const {
    const auto top = _list.valueForKey(_list.root(), "$top");
    const auto root = top ? _list.valueForKey(*top, "root") : std::nullopt;
    return root ? valueOf(followed(*root)) : std::nullopt;
  }

 private:
  /// The object that stands for the one at `place`: one hop, as archives are written.
  Place followed(Place place) const {
    const auto uid = _list.uidAt(place);
    return uid && *uid < _objects.size() ? _objects[static_cast<std::size_t>(*uid)] : place;
  }

  std::optional<PropertyList> valueOf(Place place) const {
    const auto fields = fieldsOf(place);
    if (!fields) {
      return _list.scalarAt(place);
    }
    if (fields->size() > mostFields) {
      return std::nullopt;
    }
    PropertyList::Dictionary record;
    for (const auto& [name, value] : *fields) {
      const auto text = _list.textAt(followed(name));
      auto scalar = _list.scalarAt(followed(value));
      if (text && scalar) {
        record.emplace(*text, std::move(*scalar));
      }
    }
    return record;
  }

  /// The fields of an object, or the entries if the object is a dictionary.
  std::optional<std::vector<Entry>> fieldsOf(Place place) const {
    const auto keys = _list.valueForKey(place, "NS.keys");
    const auto values = _list.valueForKey(place, "NS.objects");
    if (!keys || !values) {
      return _list.dictionaryAt(place);
    }
    const auto keyPlaces = _list.arrayAt(*keys);
    const auto valuePlaces = _list.arrayAt(*values);
    if (!keyPlaces || !valuePlaces || keyPlaces->size() != valuePlaces->size()) {
      return std::nullopt;
    }
    std::vector<Entry> entries;
    entries.reserve(keyPlaces->size());
    for (std::size_t index = 0; index < keyPlaces->size(); ++index) {
      entries.emplace_back((*keyPlaces)[index], (*valuePlaces)[index]);
    }
    return entries;
  }

  const BinaryPropertyList& _list;
  std::vector<Place> _objects;
};

}  // namespace

std::optional<PropertyList> KeyedArchive::rootOfData(std::string_view data) {
  const auto list = data.size() <= largestArchive ? BinaryPropertyList::create(data) : std::nullopt;
  if (!list) {
    return std::nullopt;
  }
  Archive archive(*list);
  return archive.open() ? archive.root() : std::nullopt;
}

}  // namespace quennel
