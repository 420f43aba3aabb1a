#include "platform/linux/bus/BusPropertyList.h"

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

template <typename Number>
std::optional<Number> readNumber(sd_bus_message* message, char type) {
  Number number{};
  if (sd_bus_message_read_basic(message, type, &number) <= 0) {
    return std::nullopt;
  }
  return number;
}

template <typename Number>
std::optional<PropertyList> readInteger(sd_bus_message* message, char type) {
  const auto number = readNumber<Number>(message, type);
  return number ? std::optional<PropertyList>(static_cast<std::int64_t>(*number)) : std::nullopt;
}

std::optional<PropertyList> readText(sd_bus_message* message, char type) {
  const char* text = nullptr;
  if (sd_bus_message_read_basic(message, type, static_cast<void*>(&text)) <= 0) {
    return std::nullopt;
  }
  return PropertyList(text);
}

std::optional<PropertyList> readData(sd_bus_message* message) {
  const void* bytes = nullptr;
  std::size_t size = 0;
  if (sd_bus_message_read_array(message, SD_BUS_TYPE_BYTE, &bytes, &size) < 0) {
    return std::nullopt;
  }
  return PropertyList(PropertyList::Data{std::string(static_cast<const char*>(bytes), size)});
}

/// All that the container of this type holds, one after another.
std::optional<PropertyList> readElements(sd_bus_message* message, char type, const char* contents) {
  PropertyList::Array elements;
  if (sd_bus_message_enter_container(message, type, contents) <= 0) {
    return std::nullopt;
  }
  while (sd_bus_message_at_end(message, 0) == 0) {
    if (auto element = readPropertyList(message)) {
      elements.push_back(std::move(*element));
    }
  }
  if (sd_bus_message_exit_container(message) < 0) {
    return std::nullopt;
  }
  return PropertyList(std::move(elements));
}

std::optional<PropertyList> readVariant(sd_bus_message* message, const char* contents) {
  if (sd_bus_message_enter_container(message, SD_BUS_TYPE_VARIANT, contents) <= 0) {
    return std::nullopt;
  }
  auto value = readPropertyList(message);
  return sd_bus_message_exit_container(message) < 0 ? std::nullopt : std::move(value);
}

PropertyList::Dictionary readEntries(sd_bus_message* message, const std::string& entry) {
  PropertyList::Dictionary dictionary;
  if (sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, ("{" + entry + "}").c_str()) <=
      0) {
    return dictionary;
  }
  while (sd_bus_message_enter_container(message, SD_BUS_TYPE_DICT_ENTRY, entry.c_str()) > 0) {
    const char* key = nullptr;
    if (sd_bus_message_read_basic(message, SD_BUS_TYPE_STRING, static_cast<void*>(&key)) <= 0) {
      return dictionary;
    }
    if (auto value = readPropertyList(message)) {
      dictionary.insert_or_assign(key, std::move(*value));
    }
    if (sd_bus_message_exit_container(message) < 0) {
      return dictionary;
    }
  }
  sd_bus_message_exit_container(message);
  return dictionary;
}

std::optional<PropertyList> readArray(sd_bus_message* message, const std::string& contents) {
  if (contents == "y") {
    return readData(message);
  }
  if (contents.starts_with("{s")) {
    return PropertyList(readEntries(message, contents.substr(1, contents.size() - 2)));
  }
  if (contents.starts_with("{")) {
    sd_bus_message_skip(message, ("a" + contents).c_str());
    return std::nullopt;
  }
  return readElements(message, SD_BUS_TYPE_ARRAY, contents.c_str());
}

std::optional<PropertyList> readNumberOfType(sd_bus_message* message, char type) {
  switch (type) {
    case SD_BUS_TYPE_BYTE:
      return readInteger<std::uint8_t>(message, type);
    case SD_BUS_TYPE_INT16:
      return readInteger<std::int16_t>(message, type);
    case SD_BUS_TYPE_UINT16:
      return readInteger<std::uint16_t>(message, type);
    case SD_BUS_TYPE_INT32:
      return readInteger<std::int32_t>(message, type);
    case SD_BUS_TYPE_UINT32:
      return readInteger<std::uint32_t>(message, type);
    case SD_BUS_TYPE_INT64:
      return readInteger<std::int64_t>(message, type);
    case SD_BUS_TYPE_UINT64:
      return readNumber<std::uint64_t>(message, type);
    case SD_BUS_TYPE_DOUBLE:
      return readNumber<double>(message, type);
    default:
      return std::nullopt;
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
  char type = 0;
  const char* contents = nullptr;
  if (sd_bus_message_peek_type(message, &type, &contents) <= 0) {
    return std::nullopt;
  }
  switch (type) {
    case SD_BUS_TYPE_BOOLEAN: {
      const auto boolean = readNumber<int>(message, type);
      return boolean ? std::optional<PropertyList>(*boolean != 0) : std::nullopt;
    }
    case SD_BUS_TYPE_STRING:
    case SD_BUS_TYPE_OBJECT_PATH:
    case SD_BUS_TYPE_SIGNATURE:
      return readText(message, type);
    case SD_BUS_TYPE_ARRAY:
      return readArray(message, contents);
    case SD_BUS_TYPE_STRUCT:
      return readElements(message, type, contents);
    case SD_BUS_TYPE_VARIANT:
      return readVariant(message, contents);
    case SD_BUS_TYPE_UNIX_FD:
      sd_bus_message_skip(message, "h");
      return std::nullopt;
    default:
      return readNumberOfType(message, type);
  }
}

PropertyList::Dictionary readDictionary(sd_bus_message* message) {
  return readEntries(message, "sv");
}

}  // namespace quennel
