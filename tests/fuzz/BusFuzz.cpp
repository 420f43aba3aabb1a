#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

#include "platform/linux/bus/BusPropertyList.h"
#include "platform/linux/bus/BusTypes.h"
#include "platform/values/URL.h"
#include "tests/fuzz/BusStandIn.h"
#include "tests/fuzz/Require.h"

namespace quennel::test {
namespace {

/// What all messages of the run have as their number; far above those of the stand-in's own.
constexpr std::uint32_t serial = 0x51554E4E;
constexpr std::size_t longestInput = 16384;

struct Entrance {
  char type;
  const char* path;
  const char* interface;
  const char* member;
  const char* signature;
};

constexpr char methodCall = 1;
constexpr char signal = 4;
constexpr std::array entrances{
    Entrance{methodCall, BusURLEvents::objectPath, BusURLEvents::interfaceName, "Open", "asa{sv}"},
    Entrance{methodCall, BusURLEvents::objectPath, BusURLEvents::interfaceName, "Activate",
             "a{sv}"},
    Entrance{methodCall, BusURLEvents::objectPath, BusURLEvents::interfaceName, "ActivateAction",
             "sava{sv}"},
    Entrance{signal, BusDistributedNotificationCenter::objectPath,
             BusDistributedNotificationCenter::interfaceName,
             BusDistributedNotificationCenter::signalName, "ssa{sv}"},
};

/// The input, taken from its start.
class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size)
      : _rest(reinterpret_cast<const char*>(data), size) {}

  std::uint8_t byte() {
    const auto taken = text(1);
    return taken.empty() ? 0 : static_cast<std::uint8_t>(taken.front());
  }
  std::string text(std::size_t length) {
    const std::string taken(_rest.substr(0, length));
    _rest.remove_prefix(taken.size());
    return taken;
  }
  std::string rest() { return text(_rest.size()); }

 private:
  std::string_view _rest;
};

void align(std::string& bytes, std::size_t boundary) {
  bytes.append((boundary - bytes.size() % boundary) % boundary, '\0');
}

void appendNumber(std::string& bytes, std::size_t number) {
  align(bytes, 4);
  for (int shift = 0; shift < 32; shift += 8) {
    bytes += static_cast<char>(number >> shift & 0xFF);
  }
}

/// One field of a header: its code, then a variant of the type 'o', 's' or 'g'.
void appendField(std::string& fields, char code, char type, const std::string& text) {
  align(fields, 8);
  fields.append({code, 1, type, '\0'});
  if (type == 'g') {
    fields += static_cast<char>(text.size());
  } else {
    appendNumber(fields, text.size());
  }
  fields.append(text).append(1, '\0');
}

std::string headerFields(const Entrance& entrance, const std::string& signature) {
  std::string fields;
  appendField(fields, 1, 'o', entrance.path);
  appendField(fields, 2, 's', entrance.interface);
  appendField(fields, 3, 's', entrance.member);
  appendField(fields, 6, 's', entrance.type == signal ? ":1.1" : BusURLEvents::busName);
  appendField(fields, 7, 's', ":1.2");
  if (!signature.empty()) {
    appendField(fields, 8, 'g', signature);
  }
  return fields;
}

/// A message as it is on the wire. The lengths in it are right, so that what follows it is read as
/// the next one; everything else may be wrong.
std::string wire(char type, const std::string& fields, const std::string& body) {
  constexpr char noFlags = 0;
  constexpr char version = 1;
  std::string bytes{'l', type, noFlags, version};
  appendNumber(bytes, body.size());
  appendNumber(bytes, serial);
  appendNumber(bytes, fields.size());
  bytes += fields;
  align(bytes, 8);
  return bytes + body;
}

std::unique_ptr<BusStandIn> session;

void checkWhatArrived() {
  for (const auto& event : session->opened) {
    require(event.directObject && URL::create(*event.directObject), "what is opened is a URL");
  }
  for (const auto& notification : session->posted) {
    require(notification.name == BusURLEvents::busName, "only the observed name is heard");
    require(!notification.object || !notification.object->empty(), "no object is an empty one");
  }
}

void checkEntrance(Input& input, std::size_t kind) {
  const Entrance& entrance = entrances[kind];
  const std::uint8_t length = input.byte();
  // Mostly the right types, so that what is in them is read.
  const std::string signature =
      length % 4 == 0 ? entrance.signature : input.text(static_cast<std::size_t>(length / 4));
  session->pass(wire(entrance.type, headerFields(entrance, signature), input.rest()));
  const bool isOpen = session->isOpen();
  require(isOpen || signature != entrance.signature, "no contents end the connection");
  // One whose types are none at all is dropped before anybody sees it.
  const int answers = session->countAnswersTo(serial);
  require(answers <= 1, "a message has one answer at most");
  require(!isOpen || entrance.type == signal || signature != entrance.signature || answers == 1,
          "a call has an answer");
}

void checkHeader(Input& input) {
  const char type = static_cast<char>(input.byte());
  const std::string fields = input.text(input.byte());
  session->pass(wire(type, fields, input.rest()));
}

}  // namespace
}  // namespace quennel::test

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quennel::test;
  if (size > longestInput) {
    return -1;
  }
  if (!session || !session->isOpen()) {
    session.reset();
    session = std::make_unique<BusStandIn>();
  }
  Input input(data, size);
  const std::size_t kind = input.byte() % (entrances.size() + 1);
  kind < entrances.size() ? checkEntrance(input, kind) : checkHeader(input);
  checkWhatArrived();
  return 0;
}
