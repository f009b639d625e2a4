#pragma once

#include <chrono>
#include <string>

namespace quellix {

// Waits for a message box of any process of this desktop, presses its button and returns
// "caption: text" in UTF-8; empty when none came in time.
std::string AnswerMessageBox(std::chrono::milliseconds limit);

}  // namespace quellix
