#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "SilentReceiver.h"
#include "link/IpcInterface.h"

namespace quellix {

// A link to a stand-in renderer in a process of its own, which logs the bytes of every message.
class LinkTest : public testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  // Starts the renderer, following a script if one is given.
  void Start(const std::string& script = {}, RequestReceiver* requestReceiver = nullptr);

  // Closes the renderer and waits for its end. A receiver of a test's own must not end before.
  void Close();

  // Closes the renderer and returns the commands that it received, in order.
  std::vector<nlohmann::json> Received();
  nlohmann::json Report() const;

  std::filesystem::path folder;
  SilentReceiver receiver;
  IpcInterface link;
};

}  // namespace quellix
