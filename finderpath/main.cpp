// Prints the folder that the file manager's window in front shows, as one absolute path and a line
// break; or, when that cannot be known for certain, why not, in a sentence for the user.

#include <libintl.h>

#include <clocale>
#include <filesystem>
#include <iostream>
#include <system_error>

#include "finderpath/FrontFolder.h"
#include "finderpath/Turn.h"
#include "platform/linux/base/HomeFolder.h"
#include "platform/values/Path.h"

namespace {

constexpr auto catalogue = "quennelhelper";

void useUsersLanguage() {
  std::setlocale(LC_MESSAGES, "");
  bind_textdomain_codeset("nautilus", "UTF-8");
  std::error_code failure;
  // PREFIX/lib/quennelhelper/get-finder-path.scpt
  const auto self = std::filesystem::read_symlink("/proc/self/exe", failure);
  const auto locales = self.parent_path().parent_path().parent_path() / "share/locale";
  bindtextdomain(catalogue, locales.c_str());
  bind_textdomain_codeset(catalogue, "UTF-8");
}

std::string scriptsFolder() {
  return quennel::appendingPathComponent(quennel::homeFolder().value_or(""),
                                         "Library/Application Scripts/net.brellow.QuennelHelper");
}

}  // namespace

int main() {
  useUsersLanguage();
  const quennel::Turn turn;
  const auto folder = quennel::frontFolder(scriptsFolder());
  // Whoever runs the script shows what is not a path to the user.
  std::cout << (folder.path ? *folder.path : dgettext(catalogue, folder.reason)) << '\n'
            << std::flush;
  return std::cout ? 0 : 1;
}
