#include "platform/linux/locale/UserLocale.h"

#include <libintl.h>
#include <locale.h>

namespace quennel {
namespace {

/// Messages as the environment says; characters always in UTF-8, as in all texts of the program.
locale_t makeUserLocale() {
  locale_t characters = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  if (characters == nullptr) {
    characters = newlocale(LC_ALL_MASK, "C", nullptr);
  }
  // An environment that names a locale which is not installed leaves the texts English.
  const locale_t complete = newlocale(LC_MESSAGES_MASK, "", characters);
  return complete != nullptr ? complete : characters;
}

/// Made once and kept: texts may be asked for until the very end.
locale_t userLocale() {
  static const locale_t locale = makeUserLocale();
  return locale;
}

/// Makes the user's locale the calling thread's own, for one look-up.
class ThreadLocale {
 public:
  ThreadLocale() : _previous(uselocale(userLocale())) {}
  ThreadLocale(const ThreadLocale&) = delete;
  ThreadLocale& operator=(const ThreadLocale&) = delete;
  ~ThreadLocale() { uselocale(_previous); }

 private:
  locale_t _previous;
};

}  // namespace

std::string UserLocale::translation(const std::string& key, const char* domain,
                                    const std::string& directory) {
  if (key.empty()) {
    return key;  // the empty key names a catalogue's header
  }
  if (bindtextdomain(domain, directory.c_str()) == nullptr ||
      bind_textdomain_codeset(domain, "UTF-8") == nullptr) {
    return key;
  }
  const ThreadLocale locale;
  return dgettext(domain, key.c_str());
}

}  // namespace quennel
