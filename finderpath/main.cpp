// Prints the folder that the file manager's window in front shows, as one absolute path and a line
// break; or nothing, with a status other than 0, when that cannot be known for certain.

#include <libintl.h>

#include <clocale>
#include <filesystem>
#include <iostream>
#include <system_error>

#include "finderpath/FrontFolder.h"
#include "finderpath/Turn.h"

int main() {
  std::setlocale(LC_MESSAGES, "");
  bind_textdomain_codeset("nautilus", "UTF-8");
  const quennel::Turn turn;
  const auto folder = quennel::frontFolder();
  std::error_code ignored;
  if (!folder || !std::filesystem::is_directory(*folder, ignored)) {
    std::cerr << "get-finder-path: the folder in front is not known\n";
    return 1;
  }
  if (!quennel::canBePrinted(*folder)) {
    std::cerr << "get-finder-path: the name of the folder in front cannot be told\n";
    return 1;
  }
  std::cout << *folder << '\n' << std::flush;
  return std::cout ? 0 : 1;
}
