#include "platform/linux/scope/MessageAuthentication.h"

#include <gcrypt.h>

#include <memory>
#include <type_traits>

#include "platform/linux/base/OpenedLibrary.h"

namespace quennel {

namespace {

/// The functions in use, under their own names.
struct Library {
  decltype(&gcry_check_version) checkVersion = nullptr;
  decltype(&gcry_control) control = nullptr;
  decltype(&gcry_mac_open) open = nullptr;
  decltype(&gcry_mac_setkey) setKey = nullptr;
  decltype(&gcry_mac_write) write = nullptr;
  decltype(&gcry_mac_read) read = nullptr;
  decltype(&gcry_mac_verify) verify = nullptr;
  decltype(&gcry_mac_close) close = nullptr;
};

void initialize(const Library& library) {
  // The bus library uses it as well and may have been first.
  if (library.control(GCRYCTL_INITIALIZATION_FINISHED_P) == 0) {
    library.checkVersion(nullptr);
    library.control(GCRYCTL_INITIALIZATION_FINISHED, 0);
  }
}

Library load() {
  const OpenedLibrary opened("libgcrypt.so.20", RTLD_LAZY);
  Library library;
  const bool complete =
      opened.find("gcry_check_version", library.checkVersion) &&
      opened.find("gcry_control", library.control) && opened.find("gcry_mac_open", library.open) &&
      opened.find("gcry_mac_setkey", library.setKey) &&
      opened.find("gcry_mac_write", library.write) && opened.find("gcry_mac_read", library.read) &&
      opened.find("gcry_mac_verify", library.verify) &&
      opened.find("gcry_mac_close", library.close);
  if (!complete) {
    return {};
  }
  initialize(library);
  return library;
}

const Library& library() {
  static const Library loaded = load();
  return loaded;
}

struct CloseComputation {
  void operator()(gcry_mac_hd_t computation) const { library().close(computation); }
};
using Computation = std::unique_ptr<std::remove_pointer_t<gcry_mac_hd_t>, CloseComputation>;

/// A computation that has taken in the message; null when the library refused.
Computation computationOver(std::string_view message, const MessageAuthentication::Key& key) {
  gcry_mac_hd_t handle = nullptr;
  if (library().open == nullptr || library().open(&handle, GCRY_MAC_HMAC_SHA256, 0, nullptr) != 0) {
    return nullptr;
  }
  Computation computation(handle);
  if (library().setKey(handle, key.data(), key.size()) != 0 ||
      library().write(handle, message.data(), message.size()) != 0) {
    return nullptr;
  }
  return computation;
}

}  // namespace

std::optional<MessageAuthentication::Tag> MessageAuthentication::tagOf(std::string_view message,
                                                                       const Key& key) {
  Tag tag;
  std::size_t written = tag.size();
  const Computation computation = computationOver(message, key);
  const bool done = computation && library().read(computation.get(), tag.data(), &written) == 0;
  return done && written == tag.size() ? std::optional(tag) : std::nullopt;
}

bool MessageAuthentication::isGenuine(std::string_view tag, std::string_view message,
                                      const Key& key) {
  const Computation computation = tag.size() == size ? computationOver(message, key) : nullptr;
  return computation && library().verify(computation.get(), tag.data(), tag.size()) == 0;
}

}  // namespace quennel
