#include "platform/linux/bus/BusPropertyList.h"

#include <cerrno>
#include <cstdint>
#include <string>
#include <utility>

namespace quennel {

namespace {

int appendVariant(sd_bus_message* message, const PropertyList& value);

int appendData(sd_bus_message* message, const PropertyList::Data& data) {
  const int opened = sd_bus_message_open_container(message, SD_BUS_TYPE_VARIANT, "ay");
  if (opened < 0) {
    return opened;
  }
  const int appended =
      sd_bus_message_append_array(message, SD_BUS_TYPE_BYTE, data.bytes.data(), data.bytes.size());
  return appended < 0 ? appended : sd_bus_message_close_container(message);
}

int appendArray(sd_bus_message* message, const PropertyList::Array& array) {
  int result = sd_bus_message_open_container(message, SD_BUS_TYPE_VARIANT, "av");
  if (result >= 0) {
    result = sd_bus_message_open_container(message, SD_BUS_TYPE_ARRAY, "v");
  }
  for (auto element = array.begin(); result >= 0 && element != array.end(); ++element) {
    if (!element->date()) {
      result = appendVariant(message, *element);
    }
  }
  if (result >= 0) {
    result = sd_bus_message_close_container(message);
  }
  return result < 0 ? result : sd_bus_message_close_container(message);
}

int appendDictionaryVariant(sd_bus_message* message, const PropertyList::Dictionary& dictionary) {
  int result = sd_bus_message_open_container(message, SD_BUS_TYPE_VARIANT, "a{sv}");
  if (result >= 0) {
    result = appendDictionary(message, dictionary);
  }
  return result < 0 ? result : sd_bus_message_close_container(message);
}

int appendVariant(sd_bus_message* message, const PropertyList& value) {
  if (const auto* const boolean = value.boolean()) {
    return sd_bus_message_append(message, "v", "b", static_cast<int>(*boolean));
  }
  if (const auto* const integer = value.integer()) {
    return sd_bus_message_append(message, "v", "x", *integer);
  }
  if (const auto* const largeInteger = value.largeInteger()) {
    return sd_bus_message_append(message, "v", "t", *largeInteger);
  }
  if (const auto* const real = value.real()) {
    return sd_bus_message_append(message, "v", "d", *real);
  }
  if (const auto* const string = value.string()) {
    return sd_bus_message_append(message, "v", "s", string->c_str());
  }
  if (const auto* const data = value.data()) {
    return appendData(message, *data);
  }
  if (const auto* const array = value.array()) {
    return appendArray(message, *array);
  }
  return value.dictionary() ? appendDictionaryVariant(message, *value.dictionary()) : 0;
}

int appendEntry(sd_bus_message* message, const std::string& key, const PropertyList& value) {
  int result = sd_bus_message_open_container(message, SD_BUS_TYPE_DICT_ENTRY, "sv");
  if (result >= 0) {
    result = sd_bus_message_append(message, "s", key.c_str());
  }
  if (result >= 0) {
    result = appendVariant(message, value);
  }
  return result < 0 ? result : sd_bus_message_close_container(message);
}

// What the functions below answer of the next value in a message: 1 when it was read; 0 when it was
// skipped, because it has no property list form; a negative errno value when it can be neither read
// nor skipped (a text with a character that the bus does not let through, for instance). Nothing
// behind a broken value can be reached, so whoever meets one ends there.

int readValue(sd_bus_message* message, PropertyList& value);

/// An operation of sd-bus that ought to have found something answered `result`.
int brokenBecause(int result) { return result < 0 ? result : -EBADMSG; }

int skip(sd_bus_message* message, const std::string& types) {
  const int skipped = sd_bus_message_skip(message, types.c_str());
  return skipped > 0 ? 0 : brokenBecause(skipped);
}

template <typename Number, typename Stored = Number>
int readNumber(sd_bus_message* message, char type, PropertyList& value) {
  Number number{};
  const int read = sd_bus_message_read_basic(message, type, &number);
  if (read <= 0) {
    return brokenBecause(read);
  }
  value = static_cast<Stored>(number);
  return 1;
}

int readBoolean(sd_bus_message* message, PropertyList& value) {
  int boolean = 0;
  const int read = sd_bus_message_read_basic(message, SD_BUS_TYPE_BOOLEAN, &boolean);
  if (read <= 0) {
    return brokenBecause(read);
  }
  value = boolean != 0;
  return 1;
}

int readText(sd_bus_message* message, char type, PropertyList& value) {
  const char* text = nullptr;
  const int read = sd_bus_message_read_basic(message, type, static_cast<void*>(&text));
  if (read <= 0) {
    return brokenBecause(read);
  }
  value = text;
  return 1;
}

int readData(sd_bus_message* message, PropertyList& value) {
  const void* bytes = nullptr;
  std::size_t size = 0;
  const int read = sd_bus_message_read_array(message, SD_BUS_TYPE_BYTE, &bytes, &size);
  if (read < 0) {
    return read;
  }
  value = PropertyList::Data{std::string(static_cast<const char*>(bytes), size)};
  return 1;
}

/// All that the container of this type holds, one after another.
int readElements(sd_bus_message* message, char type, const char* contents, PropertyList& value) {
  const int entered = sd_bus_message_enter_container(message, type, contents);
  if (entered <= 0) {
    return brokenBecause(entered);
  }
  PropertyList::Array elements;
  int atEnd = 0;
  while ((atEnd = sd_bus_message_at_end(message, 0)) == 0) {
    PropertyList element = false;
    const int read = readValue(message, element);
    if (read < 0) {
      return read;
    }
    if (read > 0) {
      elements.push_back(std::move(element));
    }
  }
  const int exited = atEnd < 0 ? atEnd : sd_bus_message_exit_container(message);
  if (exited < 0) {
    return exited;
  }
  value = std::move(elements);
  return 1;
}

int readVariant(sd_bus_message* message, const char* contents, PropertyList& value) {
  const int entered = sd_bus_message_enter_container(message, SD_BUS_TYPE_VARIANT, contents);
  if (entered <= 0) {
    return brokenBecause(entered);
  }
  const int read = readValue(message, value);
  const int exited = read < 0 ? read : sd_bus_message_exit_container(message);
  return exited < 0 ? exited : read;
}

/// One entry, which has been entered, of a dictionary with texts as keys.
int readEntry(sd_bus_message* message, PropertyList::Dictionary& dictionary) {
  const char* key = nullptr;
  const int keyed =
      sd_bus_message_read_basic(message, SD_BUS_TYPE_STRING, static_cast<void*>(&key));
  if (keyed <= 0) {
    return brokenBecause(keyed);
  }
  PropertyList value = false;
  const int read = readValue(message, value);
  if (read > 0) {
    dictionary.insert_or_assign(key, std::move(value));
  }
  return read < 0 ? read : sd_bus_message_exit_container(message);
}

/// `entry` is the types of a key and a value. What stands before a broken entry is kept.
int readEntries(sd_bus_message* message, const std::string& entry,
                PropertyList::Dictionary& dictionary) {
  const int entered =
      sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, ("{" + entry + "}").c_str());
  if (entered <= 0) {
    return brokenBecause(entered);
  }
  int found = 0;
  while ((found = sd_bus_message_enter_container(message, SD_BUS_TYPE_DICT_ENTRY, entry.c_str())) >
         0) {
    const int read = readEntry(message, dictionary);
    if (read < 0) {
      return read;
    }
  }
  const int exited = found < 0 ? found : sd_bus_message_exit_container(message);
  return exited < 0 ? exited : 1;
}

int readArray(sd_bus_message* message, const std::string& contents, PropertyList& value) {
  if (contents == "y") {
    return readData(message, value);
  }
  if (contents.starts_with("{s")) {
    PropertyList::Dictionary dictionary;
    const int read = readEntries(message, contents.substr(1, contents.size() - 2), dictionary);
    value = std::move(dictionary);
    return read;
  }
  if (contents.starts_with("{")) {
    return skip(message, "a" + contents);
  }
  return readElements(message, SD_BUS_TYPE_ARRAY, contents.c_str(), value);
}

int readNumberOfType(sd_bus_message* message, char type, PropertyList& value) {
  switch (type) {
    case SD_BUS_TYPE_BYTE:
      return readNumber<std::uint8_t, std::int64_t>(message, type, value);
    case SD_BUS_TYPE_INT16:
      return readNumber<std::int16_t, std::int64_t>(message, type, value);
    case SD_BUS_TYPE_UINT16:
      return readNumber<std::uint16_t, std::int64_t>(message, type, value);
    case SD_BUS_TYPE_INT32:
      return readNumber<std::int32_t, std::int64_t>(message, type, value);
    case SD_BUS_TYPE_UINT32:
      return readNumber<std::uint32_t, std::int64_t>(message, type, value);
    case SD_BUS_TYPE_INT64:
      return readNumber<std::int64_t>(message, type, value);
    case SD_BUS_TYPE_UINT64:
      return readNumber<std::uint64_t>(message, type, value);
    case SD_BUS_TYPE_DOUBLE:
      return readNumber<double>(message, type, value);
    default:
      return -EBADMSG;
  }
}

int readValue(sd_bus_message* message, PropertyList& value) {
  char type = 0;
  const char* contents = nullptr;
  const int peeked = sd_bus_message_peek_type(message, &type, &contents);
  if (peeked <= 0) {
    return brokenBecause(peeked);
  }
  switch (type) {
    case SD_BUS_TYPE_BOOLEAN:
      return readBoolean(message, value);
    case SD_BUS_TYPE_STRING:
    case SD_BUS_TYPE_OBJECT_PATH:
    case SD_BUS_TYPE_SIGNATURE:
      return readText(message, type, value);
    case SD_BUS_TYPE_ARRAY:
      return readArray(message, contents, value);
    case SD_BUS_TYPE_STRUCT:
      return readElements(message, type, contents, value);
    case SD_BUS_TYPE_VARIANT:
      return readVariant(message, contents, value);
    case SD_BUS_TYPE_UNIX_FD:
      return skip(message, "h");
    default:
      return readNumberOfType(message, type, value);
  }
}

}  // namespace

int appendDictionary(sd_bus_message* message, const PropertyList::Dictionary& dictionary) {
  int result = sd_bus_message_open_container(message, SD_BUS_TYPE_ARRAY, "{sv}");
  for (auto entry = dictionary.begin(); result >= 0 && entry != dictionary.end(); ++entry) {
    if (!entry->second.date()) {
      result = appendEntry(message, entry->first, entry->second);
    }
  }
  return result < 0 ? result : sd_bus_message_close_container(message);
}

std::optional<PropertyList> readPropertyList(sd_bus_message* message) {
  PropertyList value = false;
  return readValue(message, value) > 0 ? std::optional(std::move(value)) : std::nullopt;
}

PropertyList::Dictionary readDictionary(sd_bus_message* message) {
  PropertyList::Dictionary dictionary;
  readEntries(message, "sv", dictionary);
  return dictionary;
}

}  // namespace quennel
