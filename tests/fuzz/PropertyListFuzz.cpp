#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/plist/PropertyListDocument.h"
#include "platform/plist/PropertyListError.h"
#include "tests/fuzz/Require.h"

namespace quennel::test {
namespace {

constexpr auto key = "a key of the fuzzer's own";

PropertyList::Dictionary withKey(PropertyList::Dictionary dictionary, const PropertyList& value) {
  dictionary.insert_or_assign(key, value);
  return dictionary;
}

/// Changes what was read as a program would, and back.
void checkChange(const PropertyListDocument& original, const PropertyList& value) {
  PropertyListDocument document = original;
  try {
    document.setObject(value, key);
  } catch (const PropertyListError&) {
    require(document.bytes() == original.bytes(), "a change that fails changes nothing");
    return;
  }
  require(document.dictionary() == withKey(original.dictionary(), value),
          "a change changes its entry alone");
  document.setObject(std::nullopt, key);
  require(document.dictionary() == original.dictionary(), "removing undoes adding");
}

}  // namespace
}  // namespace quennel::test

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quennel;
  const auto document =
      PropertyListDocument::create(std::string(reinterpret_cast<const char*>(data), size));
  if (!document || document->dictionary().contains(test::key)) {
    return 0;
  }
  const PropertyList value = document->dictionary();
  test::require(value == PropertyList(document->dictionary()), "what is read equals itself");
  test::require(value.description().find('\n') == std::string::npos, "a description is one line");
  test::checkChange(*document, true);
  test::checkChange(*document, PropertyList::Array{"text", value});
  return 0;
}
