// The least that a program does which makes a file at the press of a key: it grabs the key, and at
// every press runs the script and copies the template into the folder that the script prints.

#include <fcntl.h>
#include <spawn.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

std::string outputOf(char* script) {
  std::array<int, 2> ends;
  if (pipe2(ends.data(), O_CLOEXEC) != 0) {
    return {};
  }
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
  std::array<char*, 2> arguments{script, nullptr};
  pid_t process = -1;
  posix_spawn(&process, script, &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  close(ends[1]);
  std::array<char, 4096> buffer;
  std::string output;
  for (ssize_t size; (size = read(ends[0], buffer.data(), buffer.size())) > 0;) {
    output.append(buffer.data(), static_cast<std::size_t>(size));
  }
  close(ends[0]);
  waitpid(process, nullptr, 0);
  return output.substr(0, output.find('\n'));
}

void copyFile(const char* from, const std::string& to) {
  const int source = open(from, O_RDONLY | O_CLOEXEC);
  const int target = open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
  struct stat status {};
  fstat(source, &status);
  sendfile(target, source, nullptr, static_cast<std::size_t>(status.st_size));
  close(source);
  close(target);
}

}  // namespace

/// KEYCODE SCRIPT TEMPLATE NAME: the key is that code with Control and Alt.
int main(int, char** arguments) {
  xcb_connection_t* const display = xcb_connect(nullptr, nullptr);
  const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(display)).data->root;
  const auto key = static_cast<xcb_keycode_t>(std::atoi(arguments[1]));
  xcb_grab_key(display, 1, root, XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1, key, XCB_GRAB_MODE_ASYNC,
               XCB_GRAB_MODE_ASYNC);
  std::free(xcb_get_input_focus_reply(display, xcb_get_input_focus(display), nullptr));
  std::puts("ready");
  std::fflush(stdout);
  while (xcb_generic_event_t* const event = xcb_wait_for_event(display)) {
    if ((event->response_type & 0x7f) == XCB_KEY_PRESS) {
      copyFile(arguments[3], outputOf(arguments[2]) + "/" + arguments[4]);
    }
    std::free(event);
  }
}
