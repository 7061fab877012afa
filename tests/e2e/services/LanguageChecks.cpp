// The catalogue through the executive's language component: with the test component registered
// (pseudo-language "[[...]]"), without it (the default texts), and a real dialog translated through it.
#include <windows.h>

#include <objbase.h>

#include <cstdio>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "ServiceChecks.h"
#include "core/Catalogue.h"
#include "core/CatalogueLiterals.h"
#include "win/LanguageComponent.h"
#include "win/Win32Language.h"

namespace rx9400::services {
namespace {

namespace literal = rx9400::catalogue;

struct Lookup {
  std::string_view literal;
  const char* parameter;  ///< null: a text without placeholders
  const char* pseudo;     ///< what the test component answers
  const char* standard;   ///< the default text, answered when no component is registered
};

// Blanks at either end belong to the text; one key may carry two texts, two keys one text.
const Lookup kLookups[] = {
    {literal::kDisplayNameDose, nullptr, "[[Kalmet ]]", "Kalmet "},
    {literal::kDisplayNameMas, nullptr, "[[mAs ]]", "mAs "},
    {literal::kDisplayNameAio, nullptr, "[[RX 9400WD ]]", "RX 9400WD "},
    {literal::kDetectorZeroErrorCaption, nullptr, "[[ Detector Zero Error.]]", " Detector Zero Error."},
    {literal::kCalDateCaption, nullptr, "[[Cal Date: 12/12/2008]]", "Cal Date: 12/12/2008"},
    {literal::kCalDueDateCaption, nullptr, "[[Cal Due Date: 12/12/2009]]", "Cal Due Date: 12/12/2009"},
    {literal::kNoIonChamber, nullptr, "[[No Ion Chamber]]", "No Ion Chamber"},
    {literal::kNoIonChamberOld, nullptr, "[[No Ion Chamber]]", "No Ion Chamber"},
    {literal::kExponentLetter, nullptr, "[[E]]", "E"},
    {literal::kDetectorDoesNotSupport, "Kalmet", "[[The selected detector does not support Kalmet.]]",
     "The selected detector does not support Kalmet."},
    {literal::kDetectorDoesNotSupport, "\xC2\xB5Gy", "[[The selected detector does not support \xC2\xB5Gy.]]",
     "The selected detector does not support \xC2\xB5Gy."},
};

struct Captions {
  std::vector<std::string> before;
  std::vector<std::string> pseudo;
  std::vector<std::string> standard;
};

// Captions without "::" are not literals and stay as they are.
const Captions kCaptions = {
    {"22407::Connect", "22418::Retry", "SN 12345", "", "22409::Suggestions : ", "22414::Zero Error"},
    {"[[Connect]]", "[[Retry]]", "SN 12345", "", "[[Suggestions : ]]", "[[Zero Error]]"},
    {"Connect", "Retry", "SN 12345", "", "Suggestions : ", "Zero Error"},
};

std::string describe(const Lookup& lookup) {
  std::string text = "lookup of \"" + printable(lookup.literal) + "\"";
  if (lookup.parameter != nullptr) text += " with \"" + printable(lookup.parameter) + "\"";
  return text;
}

void expectLookups(Catalogue& catalogue, bool pseudo) {
  for (const Lookup& lookup : kLookups) {
    const std::string text = lookup.parameter == nullptr ? catalogue.text(lookup.literal)
                                                         : catalogue.text(lookup.literal, lookup.parameter);
    expectText(text, pseudo ? lookup.pseudo : lookup.standard, describe(lookup));
  }
  // Pieces are concatenated as they come: the blank at the end of a piece stays between the words.
  const std::string name =
      catalogue.text(literal::kDisplayNameDose) + catalogue.text(literal::kDisplayNameMas);
  expectText(name, pseudo ? "[[Kalmet ]][[mAs ]]" : "Kalmet mAs ", "display name made of two pieces");
}

void expectCaptions(Catalogue& catalogue, bool pseudo) {
  std::vector<std::string> captions = kCaptions.before;
  catalogue.translateCaptions(captions);
  const std::vector<std::string>& expected = pseudo ? kCaptions.pseudo : kCaptions.standard;
  expect(captions.size() == expected.size(), "the translation changed the number of captions");
  for (std::size_t i = 0; i < captions.size(); ++i) {
    expectText(captions[i], expected[i], "caption \"" + kCaptions.before[i] + "\"");
  }
}

std::wstring classKey() {
  wchar_t id[40] = {};
  StringFromGUID2(win::kLanguageComponentClsid, id, 40);
  return std::wstring(L"CLSID\\") + id;
}

void languageRegistered(const Options&) {
  win::ExecutiveLanguage language;
  Catalogue catalogue(language);
  expectLookups(catalogue, true);
  expectCaptions(catalogue, true);
  // A failing lookup reaches the caller as an error.
  bool raised = false;
  try {
    catalogue.text("00000::Fails");
  } catch (const std::runtime_error&) {
    raised = true;
  }
  expect(raised, "a lookup the component fails returned instead of raising");
}

void languageUnregistered(const Options&) {
  HKEY key = nullptr;
  const LONG opened = RegOpenKeyExW(HKEY_CLASSES_ROOT, classKey().c_str(), 0, KEY_READ, &key);
  if (opened == ERROR_SUCCESS) RegCloseKey(key);
  expect(opened == ERROR_FILE_NOT_FOUND, "the component's class key is still there after unregistering");
  void* object = nullptr;
  const HRESULT created = CoCreateInstance(win::kLanguageComponentClsid, nullptr, CLSCTX_ALL,
                                           win::kLanguageComponentIid, &object);
  if (object != nullptr) static_cast<IUnknown*>(object)->Release();
  expect(created == REGDB_E_CLASSNOTREG, "CoCreateInstance of the component gave " + hresultText(created));

  win::ExecutiveLanguage language;
  Catalogue catalogue(language);
  expectLookups(catalogue, false);
  expectCaptions(catalogue, false);
  expectText(catalogue.text("00000::Fails"), "Fails", "lookup without a component");
}

// A dialog laid out like the zero-error dialog, built in memory.

struct DialogControl {
  WORD id;
  WORD classAtom;  // 0x0080 button, 0x0082 static
  DWORD style;
  short x, y, cx, cy;
  const char* caption;
  const char* translated;
};

const DialogControl kControls[] = {
    {101, 0x0082, SS_LEFT, 10, 8, 210, 10, "22415:: Detector Zero Error.", "[[ Detector Zero Error.]]"},
    {102, 0x0080, BS_GROUPBOX, 7, 22, 216, 64, "22409::Suggestions :", "[[Suggestions :]]"},
    {103, 0x0082, SS_LEFT, 14, 34, 202, 18, "22416::1) Click on Retry to check error status again.",
     "[[1) Click on Retry to check error status again.]]"},
    {104, 0x0082, SS_LEFT, 14, 54, 202, 26,
     "22417::2) Click on Connect to turnoff zero error Detector and initiate scanning",
     "[[2) Click on Connect to turnoff zero error Detector and initiate scanning]]"},
    {105, 0x0082, SS_LEFT, 10, 92, 100, 10, "SN 12345", "SN 12345"},
    {106, 0x0080, BS_PUSHBUTTON, 60, 108, 50, 14, "22418::Retry", "[[Retry]]"},
    {107, 0x0080, BS_PUSHBUTTON, 120, 108, 50, 14, "22407::Connect", "[[Connect]]"},
};

class TemplateWriter {
 public:
  void word(WORD value) { words_.push_back(value); }
  void dword(DWORD value) {
    word(LOWORD(value));
    word(HIWORD(value));
  }
  void text(const std::wstring& value) {
    for (const wchar_t c : value) word(static_cast<WORD>(c));
    word(0);
  }
  void alignToDword() {
    if (words_.size() % 2 != 0) word(0);
  }
  const DLGTEMPLATE* get() const { return reinterpret_cast<const DLGTEMPLATE*>(words_.data()); }

 private:
  std::vector<WORD> words_;
};

TemplateWriter dialogTemplate() {
  TemplateWriter writer;
  writer.dword(WS_POPUP | WS_CAPTION | WS_SYSMENU | DS_MODALFRAME | DS_SETFONT);
  writer.dword(0);
  writer.word(static_cast<WORD>(std::size(kControls)));
  writer.word(40);
  writer.word(40);
  writer.word(230);
  writer.word(130);
  writer.word(0);  // no menu
  writer.word(0);  // the standard dialog class
  writer.text(L"22414::Zero Error");
  writer.word(8);
  writer.text(L"MS Shell Dlg");
  for (const DialogControl& control : kControls) {
    writer.alignToDword();
    writer.dword(WS_CHILD | WS_VISIBLE | control.style);
    writer.dword(0);
    writer.word(static_cast<WORD>(control.x));
    writer.word(static_cast<WORD>(control.y));
    writer.word(static_cast<WORD>(control.cx));
    writer.word(static_cast<WORD>(control.cy));
    writer.word(control.id);
    writer.word(0xFFFF);
    writer.word(control.classAtom);
    writer.text(wide(control.caption));
    writer.word(0);  // no creation data
  }
  return writer;
}

INT_PTR CALLBACK dialogProcedure(HWND, UINT message, WPARAM, LPARAM) {
  return message == WM_INITDIALOG ? TRUE : FALSE;
}

std::string windowText(HWND window) {
  wchar_t text[512] = {};
  GetWindowTextW(window, text, 512);
  return utf8(text);
}

void pumpMessages(DWORD milliseconds) {
  const ULONGLONG end = GetTickCount64() + milliseconds;
  while (GetTickCount64() < end) {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
      TranslateMessage(&message);
      DispatchMessageW(&message);
    }
    Sleep(10);
  }
}

/// The distinct colours of 24-bit pixel rows (at most 64 counted).
std::size_t colourCount(const unsigned char* bits, int width, int height, int stride) {
  std::set<DWORD> seen;
  for (int y = 0; y < height && seen.size() < 64; ++y) {
    for (int x = 0; x < width; ++x) {
      const unsigned char* pixel = bits + y * stride + x * 3;
      seen.insert(pixel[0] | (pixel[1] << 8) | (pixel[2] << 16));
    }
  }
  return seen.size();
}

/// Saves a picture of the window, frame included, as a 24-bit BMP: a copy of the window's own
/// surface, or of the screen where it stands when that copy is blank. Answers the number of colours in the
/// picture.
std::size_t saveScreenshot(HWND window, const std::wstring& path) {
  RECT rect{};
  GetWindowRect(window, &rect);
  const int width = rect.right - rect.left;
  const int height = rect.bottom - rect.top;
  expect(width > 0 && height > 0, "the dialog has no size");
  BITMAPINFO info{};
  info.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
  info.bmiHeader.biWidth = width;
  info.bmiHeader.biHeight = height;
  info.bmiHeader.biPlanes = 1;
  info.bmiHeader.biBitCount = 24;
  info.bmiHeader.biCompression = BI_RGB;
  const int stride = (width * 3 + 3) & ~3;
  HDC screen = GetDC(nullptr);
  HDC memory = CreateCompatibleDC(screen);
  void* bits = nullptr;
  HBITMAP bitmap = CreateDIBSection(screen, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
  expect(bitmap != nullptr && bits != nullptr, "CreateDIBSection failed");
  HGDIOBJ previous = SelectObject(memory, bitmap);
  HDC windowDc = GetWindowDC(window);
  BitBlt(memory, 0, 0, width, height, windowDc, 0, 0, SRCCOPY);
  ReleaseDC(window, windowDc);
  GdiFlush();
  auto* pixels = static_cast<unsigned char*>(bits);
  std::size_t colours = colourCount(pixels, width, height, stride);
  if (colours < 3) {
    BitBlt(memory, 0, 0, width, height, screen, rect.left, rect.top, SRCCOPY);
    GdiFlush();
    colours = colourCount(pixels, width, height, stride);
  }
  BITMAPFILEHEADER file{};
  file.bfType = 0x4D42;
  file.bfOffBits = sizeof(BITMAPFILEHEADER) + sizeof(BITMAPINFOHEADER);
  file.bfSize = file.bfOffBits + static_cast<DWORD>(stride * height);
  FILE* out = _wfopen(path.c_str(), L"wb");
  const bool written = out != nullptr && std::fwrite(&file, sizeof(file), 1, out) == 1 &&
                       std::fwrite(&info.bmiHeader, sizeof(BITMAPINFOHEADER), 1, out) == 1 &&
                       std::fwrite(pixels, 1, static_cast<std::size_t>(stride * height), out) ==
                           static_cast<std::size_t>(stride * height);
  if (out != nullptr) std::fclose(out);
  SelectObject(memory, previous);
  DeleteObject(bitmap);
  DeleteDC(memory);
  ReleaseDC(nullptr, screen);
  expect(written, "could not write " + utf8(path));
  return colours;
}

void translatedDialog(const Options& options) {
  const TemplateWriter layout = dialogTemplate();
  HWND dialog =
      CreateDialogIndirectParamW(GetModuleHandleW(nullptr), layout.get(), nullptr, dialogProcedure, 0);
  expect(dialog != nullptr, "CreateDialogIndirectParamW failed (" + std::to_string(GetLastError()) + ")");
  struct Closer {
    HWND window;
    ~Closer() { DestroyWindow(window); }
  } closer{dialog};

  // What a dialog's load handler does: its own title through the lookup, then every control at once.
  win::ExecutiveLanguage language;
  Catalogue catalogue(language);
  SetWindowTextW(dialog, wide(catalogue.text(windowText(dialog))).c_str());
  std::vector<HWND> controls;
  std::vector<std::string> captions;
  for (const DialogControl& control : kControls) {
    HWND item = GetDlgItem(dialog, control.id);
    expect(item != nullptr, "control " + std::to_string(control.id) + " is missing");
    controls.push_back(item);
    captions.push_back(windowText(item));
  }
  catalogue.translateCaptions(captions);
  for (std::size_t i = 0; i < controls.size(); ++i) SetWindowTextW(controls[i], wide(captions[i]).c_str());

  ShowWindow(dialog, SW_SHOW);
  SetForegroundWindow(dialog);
  RedrawWindow(dialog, nullptr, nullptr, RDW_FRAME | RDW_INVALIDATE | RDW_ALLCHILDREN | RDW_UPDATENOW);
  pumpMessages(400);

  expectText(windowText(dialog), "[[Zero Error]]", "the dialog's title");
  for (const DialogControl& control : kControls) {
    const std::string shown = windowText(GetDlgItem(dialog, control.id));
    expectText(shown, control.translated, "control " + std::to_string(control.id));
    expect(shown.find("::") == std::string::npos,
           "control " + std::to_string(control.id) + " shows a literal");
  }
  const std::wstring picture = options.artifacts + L"\\dialog.bmp";
  const std::size_t colours = saveScreenshot(dialog, picture);
  expect(colours >= 3, "the screenshot is blank (" + std::to_string(colours) + " colours)");
}

}  // namespace

std::vector<Check> languageChecks() {
  return {
      {"language-registered", "lookups and caption translation go through the registered component",
       languageRegistered},
      {"language-unregistered", "without the component (unregistered cleanly) the default texts are shown",
       languageUnregistered},
      {"dialog", "a Win32 dialog's title and controls show the component's texts (screenshot saved)",
       translatedDialog},
  };
}

}  // namespace rx9400::services
