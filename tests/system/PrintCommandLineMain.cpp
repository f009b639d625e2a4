// In the renderer's place: leaves its command line, in UTF-16, in its working directory.

#include <windows.h>

#include <cwchar>
#include <fstream>

int main() {
  const wchar_t* line = GetCommandLineW();
  std::ofstream("command-line", std::ios::binary)
      .write(reinterpret_cast<const char*>(line),
             static_cast<std::streamsize>(std::wcslen(line) * sizeof *line));
}
