// The executive's topmost setting, and placement of dialogs and the pointer.
#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "core/Placement.h"

namespace rx9400 {
namespace {

class FakeRegistry final : public Registry {
 public:
  bool keyExists = true;
  std::optional<ValueInfo> info;
  std::optional<std::int32_t> dword;
  int opens = 0;

  std::optional<Key> openLocalMachineKey(std::string_view subKey) override {
    ++opens;
    EXPECT_EQ(subKey, "Software\\Brume\\tamsa\\Executive\\System");
    return keyExists ? std::optional<Key>(42) : std::nullopt;
  }
  std::optional<ValueInfo> queryValueInfo(Key key, std::string_view name) override {
    EXPECT_EQ(key, 42u);
    EXPECT_EQ(name, "Test guide settings");
    return info;
  }
  std::optional<std::int32_t> queryDword(Key, std::string_view) override { return dword; }
};

TEST(Placement, TopmostOnlyForADwordOfFourOrAboveEight) {
  const struct {
    std::int32_t value;
    bool topmost;
  } cases[] = {{0, false}, {1, false}, {3, false}, {4, true},  {5, false},         {6, false},
               {7, false}, {8, false}, {9, true},  {10, true}, {0x7FFFFFFF, true}, {-1, false}};
  for (const auto& c : cases) {
    FakeRegistry registry;
    registry.info = Registry::ValueInfo{Registry::kDwordType, 4};
    registry.dword = c.value;
    EXPECT_EQ(topmostRequired(registry), c.topmost) << c.value;
  }
}

TEST(Placement, AMissingKeyOrValueOrAnotherTypeIsNotTopmostAndEveryQueryReadsAfresh) {
  FakeRegistry registry;
  registry.keyExists = false;
  EXPECT_FALSE(topmostRequired(registry));
  registry.keyExists = true;
  EXPECT_FALSE(topmostRequired(registry)) << "key without the value";
  registry.info = Registry::ValueInfo{1, 2};  // a string holding "4"
  registry.dword = 4;
  EXPECT_FALSE(topmostRequired(registry));
  registry.info = Registry::ValueInfo{Registry::kDwordType, 4};
  registry.dword = std::nullopt;
  EXPECT_FALSE(topmostRequired(registry)) << "the data query failed";
  EXPECT_EQ(registry.opens, 4);
}

class FakeWindows final : public WindowSystem {
 public:
  std::map<WindowHandle, WindowRect> rects;
  std::vector<std::vector<int>> calls;

  std::optional<WindowRect> windowRect(WindowHandle window) override {
    const auto found = rects.find(window);
    return found == rects.end() ? std::nullopt : std::optional<WindowRect>(found->second);
  }
  void setCursorPosition(int x, int y) override { calls.push_back({x, y}); }
  void makeTopmost(WindowHandle window, int x, int y, int width, int height) override {
    calls.push_back({static_cast<int>(window), x, y, width, height});
  }
};

TEST(Placement, ThePointerGoesToTheCentreWithHalvesTruncatedAndATopmostDialogKeepsItsPlaceAndSize) {
  FakeWindows windows;
  windows.rects[1] = {10, 20, 111, 71};      // 101 x 51
  windows.rects[2] = {-301, -40, -200, -9};  // on a monitor left of the primary one
  windows.rects[7] = {100, 50, 500, 350};
  centreCursorOn(windows, 1);
  centreCursorOn(windows, 2);
  centreCursorOn(windows, 3);  // no such window: nothing moves
  makeTopmost(windows, 7);
  EXPECT_EQ(windows.calls, (std::vector<std::vector<int>>{{60, 45}, {-251, -25}, {7, 100, 50, 400, 300}}));
}

}  // namespace
}  // namespace rx9400
