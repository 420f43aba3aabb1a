#include "platform/linux/bus/OpenCall.h"

#include <cstdlib>
#include <utility>

#include "platform/linux/bus/BusPropertyList.h"
#include "platform/linux/bus/HelperName.h"
#include "platform/values/URL.h"

namespace quennel {

namespace {

constexpr auto tokenVariable = "XDG_ACTIVATION_TOKEN";
constexpr auto startupIdVariable = "DESKTOP_STARTUP_ID";

std::string variable(const char* name) {
  const char* const value = getenv(name);
  return value ? value : "";
}

BusMessage newCall(sd_bus* connection, const char* method) {
  sd_bus_message* call = nullptr;
  const int made = sd_bus_message_new_method_call(connection, &call, helperBusName,
                                                  helperObjectPath, applicationInterface, method);
  return BusMessage(made < 0 ? nullptr : call);
}

int appendURLs(sd_bus_message* call, const std::vector<std::string>& urls) {
  int result = sd_bus_message_open_container(call, SD_BUS_TYPE_ARRAY, "s");
  for (auto url = urls.begin(); result >= 0 && url != urls.end(); ++url) {
    result = sd_bus_message_append(call, "s", escapingInvalidCharacters(*url).c_str());
  }
  return result < 0 ? result : sd_bus_message_close_container(call);
}

int appendPlatformData(sd_bus_message* call, const std::string& token) {
  PropertyList::Dictionary platformData;
  if (!token.empty()) {
    platformData.emplace(activationTokenKey, token);
  }
  return appendDictionary(call, platformData);
}

}  // namespace

BusMessage newOpenCall(sd_bus* connection, const std::vector<std::string>& urls,
                       const std::string& activationToken) {
  auto call = newCall(connection, urls.empty() ? "Activate" : "Open");
  if (!call || (!urls.empty() && appendURLs(call.get(), urls) < 0) ||
      appendPlatformData(call.get(), activationToken) < 0) {
    return nullptr;
  }
  return call;
}

std::string launchToken() {
  auto token = variable(tokenVariable);
  return token.empty() ? variable(startupIdVariable) : token;
}

void forgetLaunchToken() {
  unsetenv(tokenVariable);
  unsetenv(startupIdVariable);
}

}  // namespace quennel
