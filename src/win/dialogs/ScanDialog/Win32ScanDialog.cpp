// The scan dialog as a Win32 dialog: the animation is a ring of eight dots, one lit per frame.
#include "win/dialogs/ScanDialog/Win32ScanDialog.h"

#include <cmath>

#include "win/dialogs/ScanDialog/ScanDialogIds.h"

namespace rx9400::win {
namespace {

constexpr int kFrames = 8;
constexpr int kSize = 48;
constexpr UINT_PTR kTimer = 1;

/// The frames of the animation: frame i lights dot i of the ring.
HIMAGELIST makeFrames(HWND dialog) {
  HIMAGELIST list = ImageList_Create(kSize, kSize, ILC_COLOR24, kFrames, 0);
  HDC screen = GetDC(dialog);
  HDC dc = CreateCompatibleDC(screen);
  for (int frame = 0; frame < kFrames; ++frame) {
    HBITMAP bitmap = CreateCompatibleBitmap(screen, kSize, kSize);
    HGDIOBJ old = SelectObject(dc, bitmap);
    RECT all{0, 0, kSize, kSize};
    FillRect(dc, &all, GetSysColorBrush(COLOR_BTNFACE));
    for (int dot = 0; dot < kFrames; ++dot) {
      const double angle = dot * 2 * 3.14159265358979 / kFrames;
      const int x = kSize / 2 + static_cast<int>(std::lround(17 * std::sin(angle)));
      const int y = kSize / 2 - static_cast<int>(std::lround(17 * std::cos(angle)));
      const COLORREF colour = dot == frame ? RGB(0, 120, 215) : RGB(190, 200, 210);
      HBRUSH brush = CreateSolidBrush(colour);
      HGDIOBJ oldBrush = SelectObject(dc, brush);
      HGDIOBJ oldPen = SelectObject(dc, GetStockObject(NULL_PEN));
      Ellipse(dc, x - 5, y - 5, x + 5, y + 5);
      SelectObject(dc, oldPen);
      SelectObject(dc, oldBrush);
      DeleteObject(brush);
    }
    SelectObject(dc, old);
    ImageList_Add(list, bitmap, nullptr);
    DeleteObject(bitmap);
  }
  DeleteDC(dc);
  ReleaseDC(dialog, screen);
  return list;
}

}  // namespace

Win32ScanDialog::Win32ScanDialog() : Win32DialogView(IDD_SCAN, {IDC_SCAN_LABEL, IDC_SCAN_STOP}) {}

Win32ScanDialog::~Win32ScanDialog() {
  if (frames_ != nullptr) ImageList_Destroy(frames_);
}

void Win32ScanDialog::setTimerEnabled(bool enabled) {
  timerOn_ = enabled;
  if (handle() == nullptr) return;
  if (enabled) {
    SetTimer(handle(), kTimer, static_cast<UINT>(interval_), nullptr);
  } else {
    KillTimer(handle(), kTimer);
  }
}

void Win32ScanDialog::setTimerInterval(int milliseconds) {
  interval_ = milliseconds;
  if (timerOn_ && handle() != nullptr) SetTimer(handle(), kTimer, static_cast<UINT>(interval_), nullptr);
}

int Win32ScanDialog::animationFrameCount() {
  return kFrames;
}

void Win32ScanDialog::showAnimationFrame(int frame) {
  frame_ = frame;
  InvalidateRect(control(IDC_SCAN_IMAGE), nullptr, FALSE);
}

void Win32ScanDialog::prepare() {
  frames_ = makeFrames(handle());
}

void Win32ScanDialog::clicked(ScanDialog& presenter, int id) {
  // Closing the window counts as Stop.
  if (id == IDC_SCAN_STOP || id == IDCANCEL) presenter.stopClicked();
}

void Win32ScanDialog::onTimer() {
  if (presenter_ != nullptr) presenter_->timerTick();
}

bool Win32ScanDialog::onMessage(UINT message, WPARAM, LPARAM lParam, INT_PTR& result) {
  if (message != WM_DRAWITEM) return false;
  const auto* item = reinterpret_cast<const DRAWITEMSTRUCT*>(lParam);
  if (item->CtlID != IDC_SCAN_IMAGE || frames_ == nullptr) return false;
  RECT area = item->rcItem;
  FillRect(item->hDC, &area, GetSysColorBrush(COLOR_BTNFACE));
  ImageList_Draw(frames_, frame_, item->hDC, area.left, area.top, ILD_NORMAL);
  result = TRUE;
  return true;
}

}  // namespace rx9400::win
