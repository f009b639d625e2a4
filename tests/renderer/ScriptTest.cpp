#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "app/Fnv.h"
#include "app/Script.h"

namespace kvapp::test {

using std::chrono::milliseconds;

namespace {

Script Parse(const std::string& text) {
  return Script::Parse(nlohmann::ordered_json::parse(text));
}

std::string DataOf(const std::string& request) {
  const std::string data = ParseRequest(nlohmann::ordered_json::parse(request)).data;
  return HexText(std::as_bytes(std::span(data)));
}

}  // namespace

TEST(Script, FiresEachStepAtItsCommandsAndInTheOrderWritten) {
  Script script = Parse(R"([
    {"command": "AppendMesh", "nth": 2, "repeat": 2, "request": 109, "delay_ms": 1},
    {"at": 4, "phase": "after", "link_camera": true},
    {"export_end": 1, "crash": true}])");
  std::string fired;
  std::uint64_t meshes = 0;
  for (std::uint64_t n = 1; n <= 6; ++n) {
    const bool mesh = n != 5;
    const Script::Event event{n, mesh ? "AppendMesh" : "SetProgress", mesh ? ++meshes : 1,
                              n == 5 ? 1u : 0u};
    for (const auto phase : {Script::Phase::Before, Script::Phase::After}) {
      for (const Action& action : script.AtCommand(event, phase)) {
        fired += std::to_string(n) + (phase == Script::Phase::Before ? "b" : "a") +
                 std::to_string(action.index()) + " ";
      }
    }
  }
  EXPECT_EQ(fired, "2b0 2b1 3b0 3b1 4a7 5b4 ");
}

TEST(Script, FiresAtRestWhenTheSpanHasPassedAgain) {
  Script script = Parse(R"([{"idle_ms": 100, "repeat": 2, "request": 109},
                            {"after_ms": 500, "crash": true}])");
  const auto at = [&script](int idle, int open) {
    const auto action = script.AtRest(milliseconds(idle), milliseconds(open));
    return action ? static_cast<int>(action->index()) : -1;
  };
  EXPECT_EQ(at(99, 99), -1);
  EXPECT_EQ(at(100, 100), 0);
  EXPECT_EQ(at(150, 150), -1);
  script.CommandCame();
  EXPECT_EQ(at(99, 250), -1);
  EXPECT_EQ(at(101, 252), 0);
  EXPECT_TRUE(script.WaitsForRest());
  EXPECT_EQ(at(400, 499), -1);
  EXPECT_EQ(at(402, 501), 4);
  EXPECT_FALSE(script.WaitsForRest());
}

TEST(Script, BuildsRequestDataAndCanLie) {
  EXPECT_EQ(DataOf(R"({"code":105,"ints":[1,-1]})"), "01000000ffffffff");
  EXPECT_EQ(DataOf(R"({"code":103,"floats":[1]})"), "0000803f");
  EXPECT_EQ(DataOf(R"({"code":113,"flag":2})"), "02");
  EXPECT_EQ(DataOf(R"({"code":112,"name":"ab"})"), "2000000000000000616200");
  EXPECT_EQ(DataOf(R"({"code":112,"name":"ab","name_offset":5})"), "0500000000000000616200");
  EXPECT_EQ(DataOf(R"({"code":110,"name":"a","bytes":"0102","byte_count":9})"),
            "30000000000000003200000000000000090000000000000061000102");
  EXPECT_EQ(DataOf(R"({"code":1,"data":"de ad"})"), "dead");
}

TEST(Script, SaysWhatIsWrong) {
  for (const char* text :
       {R"([{"at": 1}])", R"([{"crash": true}])", R"([{"at": 1, "idle_ms": 2, "crash": true}])",
        R"([{"at": 1, "explode": true}])", R"([{"at": 1, "phase": "later", "crash": true}])",
        R"([{"at": 1, "hold_mutex": {"event": "door"}}])",
        R"([{"at": 1, "request": {"capacity": 5}}])",
        R"([{"at": 1, "request": {"code": 5, "data": "xyz"}}])"}) {
    EXPECT_THROW(Parse(text), std::exception) << text;
  }
}

}  // namespace kvapp::test
