// Loading the device library through the wrapper: the library is opened on first use, and a missing
// library or export is a typed error from the call that needed it, never a crash.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "device/MBdllFunctions.h"

namespace rx9400 {
namespace {

/// The simulator, with some of its exports hidden: a library of an older or broken installation.
class LibraryWithout final : public DynamicLibrary {
 public:
  LibraryWithout(std::unique_ptr<DynamicLibrary> inner, std::set<std::string> hidden)
      : inner_(std::move(inner)), hidden_(std::move(hidden)) {}
  void* findSymbol(const char* name) const override {
    return hidden_.count(name) != 0 ? nullptr : inner_->findSymbol(name);
  }

 private:
  std::unique_ptr<DynamicLibrary> inner_;
  std::set<std::string> hidden_;
};

MBdllFunctions simulatorWithout(std::set<std::string> hidden) {
  return MBdllFunctions("TamsaMBDll", [hidden](std::string& error) -> std::unique_ptr<DynamicLibrary> {
    auto simulator = openDynamicLibraryAt(RX9400_SIMULATOR_PATH, error);
    if (simulator == nullptr) return nullptr;
    return std::make_unique<LibraryWithout>(std::move(simulator), hidden);
  });
}

template <typename Call>
DeviceLibraryError::Kind errorKindOf(Call call, std::string* subject = nullptr) {
  try {
    call();
  } catch (const DeviceLibraryError& error) {
    if (subject != nullptr) *subject = error.subject();
    return error.kind();
  }
  ADD_FAILURE() << "the call did not fail";
  return DeviceLibraryError::Kind::LibraryMissing;
}

TEST(DeviceLibraryLoading, AMissingLibraryFailsEveryCallWithItsName) {
  MBdllFunctions library = MBdllFunctions::forLibraryAt("/nonexistent/libTamsaMBDll.so");
  std::string subject;
  EXPECT_EQ(errorKindOf([&] { library.MBRegisterApplication(1); }, &subject),
            DeviceLibraryError::Kind::LibraryMissing);
  EXPECT_EQ(subject, "/nonexistent/libTamsaMBDll.so");
  // A second member meets the same error: a failed load is not remembered as a half-loaded library.
  EXPECT_EQ(errorKindOf([&] { library.MBGetDetectorStatus(4711); }),
            DeviceLibraryError::Kind::LibraryMissing);
  EXPECT_FALSE(library.isLoaded());
  EXPECT_TRUE(library.missingExports().empty());
}

TEST(DeviceLibraryLoading, OpenedOnFirstUseKeptOnceLoadedAndSoughtAgainAfterAFailure) {
  int opened = 0;
  bool installed = false;
  MBdllFunctions library("TamsaMBDll", [&](std::string& error) -> std::unique_ptr<DynamicLibrary> {
    ++opened;
    if (installed) return openDynamicLibraryAt(RX9400_SIMULATOR_PATH, error);
    error = "not installed yet";
    return nullptr;
  });
  EXPECT_EQ(opened, 0);
  EXPECT_EQ(errorKindOf([&] { library.MBRegisterApplication(1); }), DeviceLibraryError::Kind::LibraryMissing);
  installed = true;
  EXPECT_NO_THROW(library.MBRegisterApplication(1));
  library.MBGetUSBStatus();
  EXPECT_EQ(opened, 2);
  EXPECT_TRUE(library.isLoaded());
}

TEST(DeviceLibraryLoading, AMissingExportFailsOnlyTheCallsThatNeedIt) {
  MBdllFunctions library = simulatorWithout({"MBGetZigBeeStatus", "MBGetmAsMeasuredData"});
  EXPECT_NO_THROW(library.MBGetUSBStatus());
  std::string subject;
  EXPECT_EQ(errorKindOf([&] { library.MBGetZigBeeStatus(); }, &subject),
            DeviceLibraryError::Kind::ExportMissing);
  EXPECT_EQ(subject, "MBGetZigBeeStatus");
  EXPECT_EQ(errorKindOf([&] { library.MBGetmAsMeasuredData(4711); }, &subject),
            DeviceLibraryError::Kind::ExportMissing);
  EXPECT_EQ(subject, "MBGetmAsMeasuredData");
  // The library stays usable after the failures.
  EXPECT_NO_THROW(library.MBGetDetectorStatus(4711));
  EXPECT_EQ(library.missingExports(),
            (std::vector<std::string>{"MBGetZigBeeStatus", "MBGetmAsMeasuredData"}));
}

}  // namespace
}  // namespace rx9400
