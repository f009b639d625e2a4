#include "MessageBoxWindows.h"

#include <windows.h>

#include <filesystem>
#include <thread>

namespace quellix {

namespace {

std::string TextOf(HWND window) {
  wchar_t text[1024];
  const auto length = static_cast<std::size_t>(
      SendMessageW(window, WM_GETTEXT, 1024, reinterpret_cast<LPARAM>(text)));
  const std::u8string utf8 = std::filesystem::path(std::wstring(text, length)).u8string();
  return std::string(utf8.begin(), utf8.end());
}

BOOL CALLBACK AppendStaticText(HWND child, LPARAM result) {
  wchar_t kind[64];
  GetClassNameW(child, kind, 64);
  if (std::wstring(kind) == L"Static") *reinterpret_cast<std::string*>(result) += TextOf(child);
  return TRUE;
}

}  // namespace

std::string AnswerMessageBox(std::chrono::milliseconds limit) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  const wchar_t* dialogClass = L"#32770";
  while (std::chrono::steady_clock::now() < deadline) {
    if (HWND box = FindWindowW(dialogClass, nullptr); box != nullptr && IsWindowVisible(box)) {
      std::string text;
      EnumChildWindows(box, AppendStaticText, reinterpret_cast<LPARAM>(&text));
      const std::string caption = TextOf(box);
      PostMessageW(box, WM_COMMAND, IDOK, 0);
      return caption + ": " + text;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return {};
}

}  // namespace quellix
