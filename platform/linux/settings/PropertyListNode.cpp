#include "platform/linux/settings/PropertyListNode.h"

#include <locale.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <new>
#include <utility>

#include "platform/values/Text.h"

namespace quennel {
namespace {

using std::chrono::duration;
using std::chrono::duration_cast;
using std::chrono::microseconds;
using std::chrono::seconds;

/// The key by which the XML form writes a reference within an archive.
constexpr std::string_view referenceKey = "CF$UID";

/// Property lists count seconds from the start of 2001.
constexpr PropertyList::Date epoch{seconds(978'307'200)};

/// Numbers with a decimal point while the parser works, whatever locale a library has set.
class PointLocale {
 public:
  PointLocale() : _previous(uselocale(pointLocale())) {}
  PointLocale(const PointLocale&) = delete;
  PointLocale& operator=(const PointLocale&) = delete;
  ~PointLocale() { uselocale(_previous); }

 private:
  static locale_t pointLocale() {
    static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
    return locale;
  }

  locale_t _previous;
};

struct Freeing {
  void operator()(char* text) const { std::free(text); }
};
using CText = std::unique_ptr<char, Freeing>;

using Writer = void (*)(plist_t, char**, std::uint32_t*);

std::string written(plist_t node, Writer write) {
  char* text = nullptr;
  std::uint32_t length = 0;
  write(node, &text, &length);
  const CText owned(text);
  if (!owned) {
    throw PropertyListError("The property list cannot be written.");
  }
  return {owned.get(), length};
}

PropertyList integerOfNode(plist_t node) {
  std::uint64_t bits = 0;
  plist_get_uint_val(node, &bits);
  if (std::in_range<std::int64_t>(bits)) {
    return bits;
  }
  // A negative number and one above the signed range have the same bits here.
  const bool isNegative = xmlOfNode(node).find("<integer>-") != std::string::npos;
  return isNegative ? PropertyList(static_cast<std::int64_t>(bits)) : PropertyList(bits);
}

PropertyList realOfNode(plist_t node) {
  double number = 0;
  plist_get_real_val(node, &number);
  return number;
}

PropertyList dateOfSeconds(double sinceEpoch) {
  using Date = PropertyList::Date;
  using Seconds = duration<double>;
  const double since1970 = sinceEpoch + Seconds(epoch.time_since_epoch()).count();
  if (!(since1970 > Seconds(Date::min().time_since_epoch()).count() + 1)) {
    return Date::min();
  }
  if (since1970 > Seconds(Date::max().time_since_epoch()).count() - 1) {
    return Date::max();
  }
  // In microseconds: in nanoseconds a double shows digits that nobody stored.
  // Counted from 1970: from 2001 on, the nanoseconds back to the first dates do not fit.
  return Date(microseconds(std::llround(static_cast<long double>(sinceEpoch) * 1e6L)) +
              duration_cast<microseconds>(epoch.time_since_epoch()));
}

PropertyList dateOfNode(plist_t node) {
  // The parser's own accessor has room for 68 years before and after 2001 only; the binary form of
  // the node, a marker and a big-endian double behind the header, has the whole number.
  const std::string bytes = binaryOfNode(node);
  constexpr std::size_t marker = 8;
  if (bytes.size() < marker + 9) {
    return epoch;
  }
  std::uint64_t bits = 0;
  for (std::size_t index = 1; index <= 8; ++index) {
    bits = bits << 8 | static_cast<unsigned char>(bytes[marker + index]);
  }
  return dateOfSeconds(std::bit_cast<double>(bits));
}

PropertyList stringOfNode(plist_t node) {
  std::uint64_t length = 0;
  const char* text = plist_get_string_ptr(node, &length);
  return std::string(text ? text : "", text ? length : 0);
}

PropertyList dataOfNode(plist_t node) {
  std::uint64_t length = 0;
  const char* bytes = plist_get_data_ptr(node, &length);
  return PropertyList::Data{std::string(bytes ? bytes : "", bytes ? length : 0)};
}

PropertyList referenceOfNode(plist_t node) {
  std::uint64_t number = 0;
  plist_get_uid_val(node, &number);
  return PropertyList::Dictionary{{std::string(referenceKey), number}};
}

PropertyList arrayOfNode(plist_t node) {
  PropertyList::Array array;
  void* iterator = nullptr;
  plist_array_new_iter(node, &iterator);
  const std::unique_ptr<void, decltype(&std::free)> owned(iterator, &std::free);
  for (;;) {
    plist_t item = nullptr;
    plist_array_next_item(node, iterator, &item);
    if (!item) {
      return array;
    }
    if (auto value = propertyListOfNode(item)) {
      array.push_back(*std::move(value));
    }
  }
}

PropertyList dictionaryOfNode(plist_t node) {
  PropertyList::Dictionary dictionary;
  void* iterator = nullptr;
  plist_dict_new_iter(node, &iterator);
  const std::unique_ptr<void, decltype(&std::free)> owned(iterator, &std::free);
  for (;;) {
    char* key = nullptr;
    plist_t item = nullptr;
    plist_dict_next_item(node, iterator, &key, &item);
    const CText ownedKey(key);
    if (!item) {
      return dictionary;
    }
    if (auto value = propertyListOfNode(item)) {
      dictionary.insert_or_assign(key, *std::move(value));
    }
  }
}

PropertyListNode owned(plist_t node) {
  if (!node) {
    throw std::bad_alloc();
  }
  return PropertyListNode(node);
}

/// For numbers that the parser's constructors do not take.
PropertyListNode nodeOfIntegerText(const std::string& digits) {
  return owned(nodeOfXML("<plist><integer>" + digits + "</integer></plist>").release());
}

PropertyListNode nodeOfInteger(std::int64_t number) {
  return number < 0 ? nodeOfIntegerText(std::to_string(number))
                    : owned(plist_new_uint(static_cast<std::uint64_t>(number)));
}

void appendBigEndian(std::string& bytes, std::uint64_t number) {
  for (int shift = 56; shift >= 0; shift -= 8) {
    bytes.push_back(static_cast<char>(number >> shift & 0xFF));
  }
}

/// A binary property list that is this date alone. The parser's own constructor has room for 68
/// years before and after 2001 only, and its XML form for whole seconds.
std::string binaryOfDate(PropertyList::Date date) {
  const auto time = std::chrono::floor<microseconds>(date.time_since_epoch()) -
                    duration_cast<microseconds>(epoch.time_since_epoch());
  const auto sinceEpoch = static_cast<double>(static_cast<long double>(time.count()) / 1e6L);
  std::string bytes = "bplist00\x33";
  appendBigEndian(bytes, std::bit_cast<std::uint64_t>(sinceEpoch));
  // Where the date is; then the sizes of such a place and of a reference, a byte each.
  bytes.append("\x08\0\0\0\0\0\0\1\1", 9);
  appendBigEndian(bytes, 1);   // values in all
  appendBigEndian(bytes, 0);   // the topmost of them
  appendBigEndian(bytes, 17);  // where the places are listed
  return bytes;
}

PropertyListNode nodeOfDate(PropertyList::Date date) {
  return owned(nodeOfBinary(binaryOfDate(date)).release());
}

const std::string& storable(const std::string& text) {
  if (!isValidUTF8(text)) {
    throw PropertyListError("Text that is not UTF-8 cannot be stored in a property list: " +
                            PropertyList(text).description());
  }
  if (text.find('\0') != std::string::npos) {
    throw PropertyListError("Text with a NUL character cannot be stored in a property list: " +
                            PropertyList(text).description());
  }
  return text;
}

PropertyListNode nodeOfArray(const PropertyList::Array& array) {
  PropertyListNode node = owned(plist_new_array());
  for (const PropertyList& element : array) {
    plist_array_append_item(node.get(), nodeOfPropertyList(element).release());
  }
  return node;
}

/// The number of the reference that the dictionary stands for.
std::optional<std::uint64_t> referenceOf(const PropertyList::Dictionary& dictionary) {
  if (dictionary.size() != 1 || dictionary.begin()->first != referenceKey) {
    return std::nullopt;
  }
  const std::int64_t* number = dictionary.begin()->second.integer();
  const bool isReference = number && std::in_range<std::uint32_t>(*number);
  return isReference ? std::optional(static_cast<std::uint64_t>(*number)) : std::nullopt;
}

PropertyListNode nodeOfDictionary(const PropertyList::Dictionary& dictionary) {
  if (const auto reference = referenceOf(dictionary)) {
    return owned(plist_new_uid(*reference));
  }
  PropertyListNode node = owned(plist_new_dict());
  for (const auto& [key, value] : dictionary) {
    setEntryOfNode(node.get(), key, value);
  }
  return node;
}

}  // namespace

std::optional<PropertyList> propertyListOfNode(plist_t node) {
  switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN:
      return plist_bool_val_is_true(node) != 0;
    case PLIST_UINT:
      return integerOfNode(node);
    case PLIST_REAL:
      return realOfNode(node);
    case PLIST_DATE:
      return dateOfNode(node);
    case PLIST_STRING:
      return stringOfNode(node);
    case PLIST_DATA:
      return dataOfNode(node);
    case PLIST_UID:
      return referenceOfNode(node);
    case PLIST_ARRAY:
      return arrayOfNode(node);
    case PLIST_DICT:
      return dictionaryOfNode(node);
    default:
      return std::nullopt;
  }
}

PropertyListNode nodeOfPropertyList(const PropertyList& value) {
  if (const bool* boolean = value.boolean()) {
    return owned(plist_new_bool(*boolean ? 1 : 0));
  }
  if (const std::int64_t* number = value.integer()) {
    return nodeOfInteger(*number);
  }
  if (const std::uint64_t* number = value.largeInteger()) {
    return nodeOfIntegerText(std::to_string(*number));
  }
  if (const double* number = value.real()) {
    return owned(plist_new_real(*number));
  }
  if (const PropertyList::Date* date = value.date()) {
    return nodeOfDate(*date);
  }
  if (const std::string* text = value.string()) {
    return owned(plist_new_string(storable(*text).c_str()));
  }
  if (const PropertyList::Data* data = value.data()) {
    return owned(plist_new_data(data->bytes.data(), data->bytes.size()));
  }
  return value.array() ? nodeOfArray(*value.array()) : nodeOfDictionary(*value.dictionary());
}

void setEntryOfNode(plist_t dictionary, const std::string& key, const PropertyList& value) {
  const char* name = storable(key).c_str();
  plist_dict_set_item(dictionary, name, nodeOfPropertyList(value).release());
}

PropertyListNode nodeOfEntry(const std::string& key, const PropertyList& value) {
  PropertyListNode dictionary = owned(plist_new_dict());
  setEntryOfNode(dictionary.get(), key, value);
  return dictionary;
}

PropertyListNode nodeOfXML(std::string_view bytes) {
  const PointLocale locale;
  plist_t node = nullptr;
  plist_from_xml(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &node);
  return PropertyListNode(node);
}

PropertyListNode nodeOfBinary(std::string_view bytes) {
  plist_t node = nullptr;
  plist_from_bin(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &node);
  return PropertyListNode(node);
}

std::string xmlOfNode(plist_t node) {
  const PointLocale locale;
  return written(node, [](plist_t tree, char** text, std::uint32_t* length) {
    plist_to_xml(tree, text, length);
  });
}

std::string binaryOfNode(plist_t node) {
  return written(node, [](plist_t tree, char** text, std::uint32_t* length) {
    plist_to_bin(tree, text, length);
  });
}

}  // namespace quennel
