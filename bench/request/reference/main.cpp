// request-reference BUS_NAME TEMPLATE PREFIX SUFFIX: the least that makes a file of a request. A
// service with a single template that answers `Open` of `org.freedesktop.Application` on bare
// sd-bus and system calls, on a thread that can change nothing but the folder: no settings, no
// grants, no choice, no mercy for odd input. What the helper needs beyond it is what its settings,
// its checks and its care for the copy cost; what the confinement costs, bench/scope tells.

#include <fcntl.h>
#include <linux/landlock.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <string>
#include <string_view>
#include <thread>

namespace {

struct Template {
  const char* file;
  std::string prefix;
  std::string suffix;
};

std::string decoded(std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    unsigned char byte = 0;
    const char* const digits = text.data() + i + 1;
    if (text[i] == '%' && i + 2 < text.size() &&
        std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2) {
      result += static_cast<char>(byte);
      i += 2;
    } else {
      result += text[i];
    }
  }
  return result;
}

/// A name that is not taken in the folder.
std::string freeName(int folder, const Template& template_) {
  std::string name = template_.prefix + "." + template_.suffix;
  struct stat status;
  for (int i = 1; fstatat(folder, name.c_str(), &status, 0) == 0; ++i) {
    name = template_.prefix + "-" + std::to_string(i) + "." + template_.suffix;
  }
  return name;
}

bool copyContents(int from, int to) {
  std::array<char, std::size_t{64} * 1024> buffer;
  for (;;) {
    const ssize_t count = read(from, buffer.data(), buffer.size());
    if (count <= 0) {
      return count == 0;
    }
    if (write(to, buffer.data(), static_cast<std::size_t>(count)) != count) {
      return false;
    }
  }
}

/// The file appears under its name when it is complete.
bool makeFile(int folder, const Template& template_) {
  const int source = open(template_.file, O_RDONLY | O_CLOEXEC);
  const int copy = openat(folder, ".", O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600);
  struct stat status;
  bool made = source >= 0 && copy >= 0 && fstat(source, &status) == 0 &&
              copyContents(source, copy) && fchmod(copy, status.st_mode & 0666) == 0 &&
              futimens(copy, nullptr) == 0;
  if (made) {
    const auto path = "/proc/self/fd/" + std::to_string(copy);
    made = linkat(AT_FDCWD, path.c_str(), folder, freeName(folder, template_).c_str(),
                  AT_SYMLINK_FOLLOW) == 0;
  }
  close(copy);
  close(source);
  return made;
}

constexpr unsigned long long readings =
    LANDLOCK_ACCESS_FS_EXECUTE | LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_READ_DIR;
constexpr unsigned long long changes = ((LANDLOCK_ACCESS_FS_REFER << 1U) - 1) & ~readings;

bool makeFileConfined(int folder, const Template& template_) {
  const landlock_ruleset_attr attributes{.handled_access_fs = changes};
  const landlock_path_beneath_attr rule{.allowed_access = changes, .parent_fd = folder};
  const long ruleset = syscall(SYS_landlock_create_ruleset, &attributes, sizeof attributes, 0);
  bool made = false;
  std::thread([&] {
    made = syscall(SYS_landlock_add_rule, ruleset, LANDLOCK_RULE_PATH_BENEATH, &rule, 0) == 0 &&
           prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           syscall(SYS_landlock_restrict_self, ruleset, 0) == 0 && makeFile(folder, template_);
  }).join();
  close(static_cast<int>(ruleset));
  return made;
}

/// "scheme:///folder?index".
bool handle(std::string_view url, const Template& template_) {
  const auto start = url.find("://");
  const auto path = start == std::string_view::npos ? url : url.substr(start + 3);
  const auto question = path.find('?');
  int index = 0;
  if (question != std::string_view::npos) {
    std::from_chars(path.data() + question + 1, path.data() + path.size(), index);
  }
  if (index != 0) {
    return false;
  }
  const int folder =
      open(decoded(path.substr(0, question)).c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
  const bool made = folder >= 0 && makeFileConfined(folder, template_);
  close(folder);
  return made;
}

int openUrls(sd_bus_message* message, void* template_, sd_bus_error*) {
  int result = sd_bus_message_enter_container(message, 'a', "s");
  const char* url = nullptr;
  while (result >= 0 && (result = sd_bus_message_read(message, "s", &url)) > 0) {
    if (!handle(url, *static_cast<Template*>(template_))) {
      return -EIO;
    }
  }
  return result < 0 ? result : sd_bus_reply_method_return(message, nullptr);
}

const sd_bus_vtable methods[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("Open", "asa{sv}", "", openUrls, SD_BUS_VTABLE_UNPRIVILEGED), SD_BUS_VTABLE_END};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 5) {
    std::fprintf(stderr, "usage: request-reference BUS_NAME TEMPLATE PREFIX SUFFIX\n");
    return 2;
  }
  Template template_{argv[2], argv[3], argv[4]};
  sd_bus* bus = nullptr;
  // The name is requested without a wait for the greeting's answer: one round trip for both.
  if (sd_bus_open_user(&bus) < 0 ||
      sd_bus_add_object_vtable(bus, nullptr, "/net/brellow/QuennelHelper",
                               "org.freedesktop.Application", methods, &template_) < 0 ||
      sd_bus_request_name_async(bus, nullptr, argv[1], 0, nullptr, nullptr) < 0) {
    return 1;
  }
  for (;;) {
    const int processed = sd_bus_process(bus, nullptr);
    if (processed < 0 || (processed == 0 && sd_bus_wait(bus, UINT64_MAX) < 0)) {
      return 1;
    }
  }
}
