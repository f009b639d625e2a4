// Answers one message box of another process and prints what it said.

#include <cstdio>

#include "MessageBoxWindows.h"

int main() {
  const std::string said = quellix::AnswerMessageBox(std::chrono::minutes(1));
  std::puts(said.c_str());
  return said.empty() ? 1 : 0;
}
