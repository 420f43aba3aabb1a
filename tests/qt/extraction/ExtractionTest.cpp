#include <gtest/gtest.h>

#include <QtWidgets/QApplication>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/filemanagers/DropType.h"
#include "platform/qt/ArrivalWatch.h"
#include "platform/qt/ExtractionService.h"
#include "platform/qt/PromisedFileData.h"
#include "tests/support/Deadline.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/Process.h"
#include "tests/support/TemporaryDirectory.h"

namespace quennel::test {
namespace {

/// A drag of a promised file, and another program on the bus.
class Extraction : public testing::Test {
 protected:
  void SetUp() override {
    for (const char* const program : {"dbus-daemon", "gdbus"}) {
      if (!isInstalled(program)) {
        GTEST_SKIP() << "no " << program;
      }
    }
    _bus.emplace();
    _address.emplace("DBUS_SESSION_BUS_ADDRESS", _bus->address());
    _service = ExtractionService::create(_promise);
    ASSERT_NE(_service, nullptr);
    _drag = std::make_unique<PromisedFileData>(_promise, _service,
                                               std::make_shared<ArrivalWatch>(_promise, ""));
  }

  /// Whether the call that asks for the file in the folder is answered with success.
  bool extractTo(const std::string& folder) {
    const QByteArray name = _service->busName();
    Process call({"gdbus", "call", "--session", "--dest", name.toStdString(), "--object-path",
                  ExtractionObject::path, "--method",
                  "org.kde.ark.DndExtract.extractSelectedFilesTo", folder});
    EXPECT_TRUE(eventually([&] {
      QApplication::processEvents();
      return !call.isRunning();
    }));
    return call.wait() == 0;
  }

  char _name[5] = "test";
  char* _arguments[2] = {_name, nullptr};
  int _count = 1;
  EnvironmentVariable _platform{"QT_QPA_PLATFORM", "offscreen"};
  QApplication _application{_count, _arguments};
  TemporaryDirectory _folder;
  std::optional<PrivateBus> _bus;
  std::optional<EnvironmentVariable> _address;
  std::vector<std::string> _written;
  std::shared_ptr<const FilePromise> _promise =
      std::make_shared<FilePromise>("/a/script.sh", [this](const std::string& folder) {
        _written.push_back(folder);
        std::ofstream(folder + "/script.sh") << "#!/bin/sh\n";
      });
  std::shared_ptr<ExtractionService> _service;
  std::unique_ptr<PromisedFileData> _drag;
};

TEST_F(Extraction, IsAnsweredFromTheDropToTheEndOfTheDragAndNoLonger) {
  EXPECT_FALSE(extractTo(_folder.path())) << "nothing has been dropped";
  EXPECT_TRUE(_drag->hasFormat(drop_type::extractionPath));
  EXPECT_FALSE(extractTo(_folder.path())) << "to be dragged over a window is no drop";
  EXPECT_EQ(_drag->data(drop_type::extractionPath), QByteArray(ExtractionObject::path));
  EXPECT_TRUE(_written.empty());
  EXPECT_TRUE(extractTo(_folder.path()));
  EXPECT_EQ(_written, std::vector{_folder.path()});
  _drag.reset();
  EXPECT_FALSE(extractTo(_folder.path())) << "the drag is over";
  EXPECT_EQ(_written.size(), 1u);
}

}  // namespace
}  // namespace quennel::test
