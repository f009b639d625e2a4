#include <chrono>
#include <cstring>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <unistd.h>

#include <gtest/gtest.h>

#include "Bytes.h"
#include "FakePlugin.h"
#include "Page.h"

// The renderer's window: pages at one end, a plug-in at the other, the renderer between them.

namespace kvapp::test {

using nlohmann::json;
using std::chrono::milliseconds;

namespace {

// Starts a renderer that serves a page, counts the commands, and waits for view.json.
class Viewed : public FakePlugin {
 public:
  explicit Viewed(Environment environment = {}) {
    environment["KVAPP_VIEW"] = "0";
    Start(environment);
    while (!std::filesystem::exists(Folder() / "view.json")) {
      if (!Running()) throw std::runtime_error("the renderer serves no page");
      std::this_thread::sleep_for(milliseconds(2));
    }
    address = Json("view.json");
  }

  void Command(std::span<const std::byte> command) {
    Send(command);
    ++commands;
  }

  void OpenExport() {
    Command(TextCommand(14, "House"));
    Command(TextCommand(16, "Exporting materials and surfaces..."));
    Command(ProgressCommand(0));
  }
  void CloseExport() {
    Command(TextCommand(16, "Exporting lights..."));
    Command(OmniLight(1, 10));
    Command(TextCommand(16, ""));
    Command(ProgressCommand(0));
  }

  // Takes a request of this code and answers it with these bytes from offset 24, or as too large.
  std::string Serve(std::uint32_t code, const std::string& answer = {},
                    std::uint64_t tooLarge = 0) {
    const auto segment = AwaitRequest();
    std::uint32_t asked = 0;
    std::memcpy(&asked, segment.data(), 4);
    EXPECT_EQ(asked, code);
    const std::string data(reinterpret_cast<const char*>(segment.data()) + 24, 200);
    if (tooLarge != 0) {
      const std::uint32_t result = 101;
      std::memcpy(segment.data(), &result, 4);
      std::memcpy(segment.data() + 16, &tooLarge, 8);
    } else if (!answer.empty()) {
      const std::uint64_t required = 24 + answer.size();
      std::memcpy(segment.data() + 16, &required, 8);
      std::memcpy(segment.data() + 24, answer.data(), answer.size());
    }
    AcknowledgeRequest();
    return data;
  }

  json address;
  std::uint64_t commands = 0;
};

template <class... Values>
std::string Packed(Values... values) {
  std::string bytes;
  (bytes.append(reinterpret_cast<const char*>(&values), sizeof values), ...);
  return bytes;
}

// Materials after the mesh that names them, a texture for two materials, an owner with many items.
void ExportHouse(Viewed& plugin, float size) {
  plugin.OpenExport();
  plugin.Command(PlainMaterial(0, 0xffffffff, "Front", {1, 1, 1}));
  plugin.Command(PlainMaterial(1, 0xfffffffe, "Back", {0.6f, 0.6f, 0.7f}));
  plugin.Command(TriangleMesh(50, 7, 2, 3, size));
  for (int i = 0; i < 2500; ++i) plugin.Command(Instance(50, 8, static_cast<float>(i)));
  plugin.Command(TriangleMesh(51, 9, 4, 1));
  plugin.Command(ClassicMaterial(2, (1ull << 32) | 70));
  plugin.Command(PbrMaterial(3, (2ull << 32) | 71));
  plugin.Command(ClassicMaterial(4, (3ull << 32) | 72));
}

void ExpectSameAsLatePage(Viewed& plugin, Page& page) {
  page.ReadTo(plugin.commands);
  Page late(plugin.address);
  late.ReadTo(plugin.commands);
  EXPECT_EQ(page.model.Seen(), late.model.Seen());
}

}  // namespace

TEST(View, ServesItsPageToItsOwnAddressOnly) {
  Viewed plugin;
  const std::uint16_t port = plugin.address["port"];
  const std::string token = plugin.address["token"];
  const std::string host = "127.0.0.1:" + std::to_string(port);
  EXPECT_EQ(plugin.address["address"], "http://" + host + "/" + token + "/");
  EXPECT_EQ(token.size(), 32u);
  const auto ask = [&](const std::string& line, const std::string& fields) {
    return AskHttp(port, line + " HTTP/1.1\r\n" + fields + "\r\n");
  };
  const std::string own = "Host: " + host + "\r\n";
  const HttpAnswer page = ask("GET /" + token + "/", own);
  EXPECT_EQ(page.status, 200u);
  EXPECT_EQ(page.type, "text/html; charset=utf-8");
  EXPECT_NE(page.body.find("<title>"), std::string::npos);
  EXPECT_EQ(
      ask("HEAD /" + token + "/index.html?x=1", own + "Origin: http://" + host + "\r\n").status,
      200u);

  const std::string upgrade =
      "Upgrade: websocket\r\nConnection: Upgrade\r\nSec-WebSocket-Version: 13\r\n"
      "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n";
  struct Case {
    std::string line, fields;
    unsigned status;
  };
  const std::string wrong(32, '0');
  const Case cases[] = {
      {"GET /", own, 403},
      {"GET /" + wrong + "/", own, 403},
      {"GET /" + token, own, 403},
      {"GET /" + token + "/", "", 403},
      {"GET /" + token + "/", "Host: example.com\r\n", 403},
      {"GET /" + token + "/", "Host: 127.0.0.1\r\n", 403},
      {"GET /" + token + "/", own + "Host: example.com\r\n", 403},
      {"GET /" + token + "/", own + "Origin: http://example.com\r\n", 403},
      {"GET /" + token + "/", own + "Origin: null\r\n", 403},
      {"GET /" + token + "/socket", own + upgrade, 403},
      {"GET /" + token + "/socket", own + upgrade + "Origin: https://" + host + "\r\n", 403},
      {"GET /" + wrong + "/socket", own + upgrade + "Origin: http://" + host + "\r\n", 403},
      {"GET /" + token + "/socket", own, 426},
      {"GET /" + token + "/../KvApp.exe", own, 404},
      {"GET /" + token + "/..%2fKvApp.exe", own, 404},
      {"GET /" + token + "//etc/passwd", own, 404},
      {"POST /" + token + "/", own + "Content-Length: 0\r\n", 405},
      {"GET /" + token + "/", own + "X: " + std::string(9000, 'x') + "\r\n", 0},
      {"POST /" + token + "/", own + "Content-Length: 99999999\r\n", 0},
      {"\x16\x03\x01", "", 0},
  };
  for (const Case& test : cases) {
    EXPECT_EQ(ask(test.line, test.fields).status, test.status) << test.line << "\n" << test.fields;
  }
  EXPECT_EQ(ask("GET /" + token + "/", own).status, 200u);
  const auto rights = std::filesystem::status(plugin.Folder() / "view.json").permissions();
  EXPECT_EQ(rights & (std::filesystem::perms::group_all | std::filesystem::perms::others_all),
            std::filesystem::perms::none);
}

TEST(View, APageThatFollowsSeesWhatALatePageSees) {
  Viewed plugin;
  Page page(plugin.address);
  EXPECT_EQ(page.ReadOther()["type"], "hello");
  ExportHouse(plugin, 1);
  // The materials came after the mesh, which is shown with them before the export ends.
  ExpectSameAsLatePage(plugin, page);
  const json during = page.model.Seen();
  EXPECT_EQ(during["export"], (json{{"number", 1}, {"running", true}}));
  ASSERT_EQ(during["owners"]["8"].size(), 2500u);
  EXPECT_EQ(during["owners"]["8"][2499][13], 2499) << "column-major, the translation last";
  EXPECT_EQ(during["owners"]["7"][0][0][1][0]["name"], "Brick");
  EXPECT_EQ(during["owners"]["7"][0][0][1][0]["key"], std::to_string((1ull << 32) | 70));
  EXPECT_EQ(page.model.MeshFrames(), 2u);
  plugin.CloseExport();
  ExpectSameAsLatePage(plugin, page);
  EXPECT_EQ(page.model.Field("lights").size(), 1u);
  EXPECT_EQ(page.model.Field("lastExport")["meshesSent"], 2);
  EXPECT_GT(page.model.Field("lastExport")["bytes"], 1000);
  EXPECT_GT(page.model.Field("lastExport")["ms"], 0);
  const std::size_t textures = page.model.TextureFrames();
  EXPECT_EQ(page.model.Seen()["textures"], textures) << "the same pixels are one texture";

  // One owner is kept, one moves, one gets a new mesh; another is gone; a material changes its
  // index.
  plugin.Command(MoveOwner(9, 4));
  page.ReadTo(plugin.commands);
  EXPECT_EQ(page.model.Seen()["owners"]["9"][0][13], 4);
  EXPECT_EQ(page.model.MeshFrames(), 2u) << "a move is no mesh";
  plugin.Command(BareCommand(20));
  plugin.OpenExport();
  plugin.Command(
      CachedMaterials({{0, 0, 0xffffffff}, {1, 0, 0xfffffffe}, {5, 3, (2ull << 32) | 71}}));
  plugin.Command(ClassicMaterial(6, (1ull << 32) | 70));
  plugin.Command(OwnerBatch({9}));
  plugin.Command(TriangleMesh(52, 7, 6, 5, 3));
  page.ReadTo(plugin.commands);
  EXPECT_EQ(page.model.Seen()["owners"]["8"].size(), 2500u) << "what is there stays until the end";
  plugin.CloseExport();
  ExpectSameAsLatePage(plugin, page);
  const json after = page.model.Seen();
  EXPECT_FALSE(after["owners"].contains("8"));
  EXPECT_EQ(after["owners"]["7"][0][0][1][1]["lightPower"], 3);
  EXPECT_EQ(page.model.MeshFrames(), 3u);
  EXPECT_EQ(page.model.TextureFrames(), textures) << "the pixels were there";

  plugin.Command(Camera(5));
  plugin.Command(Background(0.25f));
  plugin.Command(ProgressCommand(7));
  ExpectSameAsLatePage(plugin, page);
  EXPECT_EQ(page.model.Field("camera")["eye"][0], 5);
  EXPECT_EQ(page.model.Field("background")["color"][0], 0.25);
  EXPECT_EQ(page.model.Seen()["faults"][0]["name"], "SetProgress");

  page.Send({{"type", "ack"}, {"sequence", plugin.commands}});
  plugin.Command(BareCommand(2));
  while (page.Read()) {
  }
  EXPECT_EQ(page.model.Field("session"), (json{{"state", "ended"}, {"reason", "closed"}}));
  plugin.AwaitExit();
  const auto acks = plugin.Lines("acks.jsonl");
  ASSERT_EQ(acks.size(), 1u);
  EXPECT_EQ(acks[0]["sequence"], plugin.commands - 1);
  EXPECT_GE(acks[0]["acknowledged"], acks[0]["taken"]);
}

TEST(View, APageThatDoesNotReadHoldsNobodyUp) {
  Viewed plugin;
  constexpr std::uint32_t kVertices = 100'000;
  Bytes mesh = TriangleMesh(50, 7, 0, 1);
  // More than the buffers between the two take; the triangle stands behind the vertices.
  const std::size_t triangles = 112 + 40 * std::size_t{kVertices};
  mesh.Fill(112, triangles - 112, 0)
      .U32(80, kVertices)
      .U32(92, static_cast<std::uint32_t>(triangles));
  for (const std::uint32_t value : {0u, 1u, 2u, 0u, 1u}) mesh.U32(mesh.Size(), value);
  plugin.Grow(mesh.Size() + 1000);
  ++plugin.commands;

  Page idle(plugin.address);
  Page busy(plugin.address);
  plugin.OpenExport();
  plugin.Command(PlainMaterial(0, 0xffffffff, "Front", {1, 1, 1}));
  plugin.Command(PlainMaterial(1, 0xfffffffe, "Back", {1, 1, 1}));
  for (std::uint32_t i = 0; i < 20; ++i) {
    plugin.Command(Bytes(mesh).U64(8, 50 + i).U64(104, 7 + i));
  }
  plugin.CloseExport();
  for (int i = 0; i < 500; ++i) plugin.Command(MoveOwner(7, static_cast<float>(i)));
  busy.ReadTo(plugin.commands);
  // The meshes are forgotten before the idle page has got them all.
  plugin.OpenExport();
  plugin.Command(CachedMaterials({{0, 0, 0xffffffff}, {1, 0, 0xfffffffe}}));
  plugin.Command(OwnerBatch({7}));
  plugin.CloseExport();
  busy.ReadTo(plugin.commands);
  idle.ReadTo(plugin.commands);
  EXPECT_EQ(busy.model.Seen(), idle.model.Seen());
  EXPECT_EQ(busy.model.MeshFrames(), 20u);
  EXPECT_LT(idle.model.MeshFrames(), 20u) << "what is gone by then need not come";
  EXPECT_EQ(idle.model.Seen()["owners"]["7"][0][13], 499);
}

TEST(View, EachRequestArrivesWithItsValuesAndItsAnswerComesBack) {
  Viewed plugin;
  Page page(plugin.address);
  page.ReadOther();
  const json vector = {1, 2, 3};
  const json camera = {
      {"eye", vector}, {"target", {4, 5, 6}}, {"up", {0, 0, 1}}, {"fieldOfView", 35}};
  json cameraWithSun = camera;
  cameraWithSun["towardsSun"] = vector;
  const std::string cameraBytes = Packed(1.f, 2.f, 3.f, 4.f, 5.f, 6.f, 0.f, 0.f, 1.f, 35.f);
  const std::string scene = std::string("North\0\0\0\0\0\0\0\0\0\0", 16) + std::string(16, '\0') +
                            cameraBytes + Packed(1, 2027, 6, 21, 14, 30, 0, 1.f, 2.f, 3.f);
  const std::string word = Packed(std::uint64_t{1});
  struct Case {
    std::uint32_t code;
    json data;
    std::string arrives;
    std::string answered;
    json fields;
  };
  const json none = json::object();
  const json name = {{"name", "view/\xc3\xa4"}};
  const std::string nameBytes = Packed(std::uint64_t{32}) + "view/\xc3\xa4" + '\0';
  const Case cases[] = {
      {102, none, "", "", none},
      {103, camera, cameraBytes, "", none},
      {105, {{"date", {2027, 6, 21, 14, 30, 59}}}, Packed(2027, 6, 21, 14, 30, 59), "", none},
      {106,
       none,
       "",
       Packed(std::uint64_t{40}, 1, 0) + scene,
       {{"scenes",
         {{{"name", "North"},
           {"camera", camera},
           {"shadows", true},
           {"date", {2027, 6, 21, 14, 30, 0}},
           {"towardsSun", vector}}}}}},
      {106, none, "", "", {{"scenes", json::array()}}},
      {107, none, "", cameraBytes + Packed(1.f, 2.f, 3.f), {{"camera", cameraWithSun}}},
      {108,
       none,
       "",
       Packed(1.f, 2.f, 3.f, 2027, 6, 21, 14, 30, 0, 1),
       {{"towardsSun", vector}, {"date", {2027, 6, 21, 14, 30, 0}}, {"shadows", true}}},
      {109, none, "", word, {{"value", true}}},
      {110,
       {{"name", "n"}, {"data", "01fF00"}},
       Packed(std::uint64_t{48}, std::uint64_t{50}, 3, 0) + std::string("n\0\x01\xff\0", 5),
       "",
       none},
      {111,
       name,
       nameBytes,
       Packed(std::uint64_t{40}, std::uint64_t{2}) + "\x0a\xff",
       {{"data", "0aff"}}},
      {111, name, nameBytes, "", {{"data", nullptr}}},
      {112, name, nameBytes, "", none},
      {113, {{"value", false}}, std::string(1, '\0'), "", none},
      {113, {{"value", true}}, "\1", "", none},
      {114, none, "", std::string(8, '\0'), {{"value", false}}},
      {115, none, "", Packed(std::uint64_t{2027}), {{"version", 2027}}},
      {116, none, "", "", none},
      // Answers that are none.
      {107, none, "", cameraBytes, {{"error", "the plug-in gave no answer of this kind"}}},
      {106,
       none,
       "",
       Packed(std::uint64_t{40}, 70000, 0) + scene,
       {{"error", "the plug-in gave no answer of this kind"}}},
      {111,
       name,
       nameBytes,
       Packed(std::uint64_t{7}, std::uint64_t{2}) + "ab",
       {{"error", "the plug-in gave no answer of this kind"}}},
  };
  std::uint64_t id = 1000;
  for (const Case& test : cases) {
    SCOPED_TRACE(std::to_string(test.code) + " " + test.data.dump());
    json request = test.data;
    request.update({{"type", "request"}, {"id", ++id}, {"code", test.code}});
    page.Send(request);
    const std::string data = plugin.Serve(test.code, test.answered);
    EXPECT_EQ(data.substr(0, test.arrives.size()), test.arrives);
    json wanted = test.fields;
    wanted.update({{"type", "answer"}, {"id", id}, {"code", test.code}});
    EXPECT_EQ(page.ReadOther(), wanted);
  }
  page.Send({{"type", "request"}, {"id", 1}, {"code", 114}});
  plugin.Serve(114, "", 2'000'000);
  EXPECT_NE(page.ReadOther()["error"].get<std::string>().find("2000000 bytes"), std::string::npos);

  // From two pages in order, and of the cameras that wait only the newest.
  Page other(plugin.address);
  other.ReadOther();
  page.Send({{"type", "request"}, {"id", 1}, {"code", 109}});
  std::this_thread::sleep_for(milliseconds(100));
  other.Send({{"type", "request"}, {"id", 2}, {"code", 114}});
  for (int i = 0; i < 5; ++i) {
    json moved = camera;
    moved.update({{"type", "request"}, {"id", 10 + i}, {"code", 103}, {"fieldOfView", 40 + i}});
    other.Send(moved);
  }
  std::this_thread::sleep_for(milliseconds(100));
  plugin.Serve(109, word);
  plugin.Serve(114, word);
  EXPECT_EQ(plugin.Serve(103).substr(36, 4), Packed(44.f));
  EXPECT_EQ(page.ReadOther()["value"], true);
  for (int i = 0; i < 4; ++i) {
    const json refused = other.ReadOther();
    EXPECT_EQ(refused["id"], 10 + i);
    EXPECT_EQ(refused["error"], "a newer camera took its place");
  }
  EXPECT_EQ(other.ReadOther()["id"], 2);
  EXPECT_EQ(other.ReadOther(), (json{{"type", "answer"}, {"id", 14}, {"code", 103}}));

  page.Send({{"type", "request"}, {"id", 3}, {"code", 104}});
  plugin.Serve(104);
  EXPECT_EQ(page.ReadOther()["id"], 3);
  while (page.Read()) {
  }
  EXPECT_EQ(page.model.Field("session")["reason"], "quit");
  EXPECT_EQ(plugin.AwaitExit(), 0);
}

TEST(View, ARequestThatNobodyAnswersIsToldAsSuch) {
  Viewed plugin;
  Page page(plugin.address);
  page.ReadOther();
  for (int id = 1; id <= 66; ++id) {
    page.Send({{"type", "request"}, {"id", id}, {"code", 109}});
  }
  EXPECT_EQ(page.ReadOther()["id"], 65) << "64 wait";
  EXPECT_EQ(page.ReadOther()["id"], 66);
  for (int id = 1; id <= 64; ++id) {
    const json answer = page.ReadOther();
    EXPECT_EQ(answer["id"], id);
    EXPECT_EQ(answer["error"], "the plug-in did not answer within 10 seconds");
  }
  // The late answer is nobody's, and the next request goes its way.
  page.Send({{"type", "request"}, {"id", 100}, {"code", 115}});
  plugin.Serve(109, Packed(std::uint64_t{1}));
  plugin.Serve(115, Packed(std::uint64_t{2027}));
  EXPECT_EQ(page.ReadOther(),
            (json{{"type", "answer"}, {"id", 100}, {"code", 115}, {"version", 2027}}));
  page.Send({{"type", "request"}, {"id", 101}, {"code", 114}});
  plugin.AwaitRequest();
  plugin.Command(BareCommand(2));
  EXPECT_EQ(page.ReadOther()["error"], "the session ended");
  EXPECT_EQ(plugin.AwaitExit(), 0);
}

TEST(View, WrongFramesAreToldAndChangeNothing) {
  Viewed plugin;
  Page good(plugin.address);
  good.ReadOther();
  Page page(plugin.address);
  page.ReadOther();
  const std::vector<std::string> wrong = {
      "",
      "x",
      "[]",
      "{}",
      "\xff",
      R"({"type":7})",
      R"({"type":"ack"})",
      R"({"type":"ack","sequence":99999})",
      R"({"type":"ack","sequence":-1})",
      R"({"type":"request","code":102})",
      R"({"type":"request","id":1,"code":101})",
      R"({"type":"request","id":1,"code":102,"x":1})",
      R"({"type":"request","id":1.5,"code":102})",
      R"({"type":"request","id":1,"code":103})",
      R"({"type":"request","id":1,"code":103,"eye":[1,2,1e39],"target":[0,0,0],"up":[0,0,1],"fieldOfView":1})",
      R"({"type":"request","id":1,"code":103,"eye":[1,2],"target":[0,0,0],"up":[0,0,1],"fieldOfView":1})",
      R"({"type":"request","id":1,"code":103,"eye":[1,2,3],"target":[0,0,0],"up":[0,0,1],"fieldOfView":180})",
      R"({"type":"request","id":1,"code":105,"date":[2027,13,1,0,0,0]})",
      R"({"type":"request","id":1,"code":105,"date":[2027.5,1,1,0,0,0]})",
      R"({"type":"request","id":1,"code":110,"name":"a","data":"0"})",
      R"({"type":"request","id":1,"code":110,"name":"a","data":"0g"})",
      R"({"type":"request","id":1,"code":111,"name":""})",
      R"({"type":"request","id":1,"code":111,"name":"a\u0000b"})",
      R"({"type":"request","id":1,"code":111,"name":")" + std::string(256, 'n') + R"("})",
      R"({"type":"request","id":1,"code":113,"value":1})",
      std::string(100'000, '[')};
  for (std::size_t i = 0; i < 99; ++i) {
    // Bytes that are no UTF-8 are no text frame; that is the protocol's own error.
    const std::string& text = wrong[i % wrong.size()];
    if (text == "\xff") continue;
    page.Send(text);
    EXPECT_EQ(page.ReadOther()["type"], "error") << text.substr(0, 200);
  }
  for (int i = 0; i < 10; ++i) page.Send(std::string("x"));
  while (page.ReadOther() != nullptr) {
  }
  for (const auto& [frame, binary] : {std::pair{std::string("\1"), true},
                                      {std::string("\xff"), false},
                                      {std::string(200'000, ' '), false}}) {
    Page rude(plugin.address);
    rude.Send(frame, binary);
    while (rude.Read()) {
    }
  }
  good.Send({{"type", "request"}, {"id", 1}, {"code", 102}});
  plugin.Serve(102);
  EXPECT_EQ(good.ReadOther()["id"], 1);
  plugin.Command(BareCommand(2));
  EXPECT_EQ(plugin.AwaitExit(), 0) << "what a page does is no fault of the plug-in";
}

TEST(View, SaysInOneSentenceWhatCannotBeServed) {
  Viewed first;
  for (const char* port : {"x", "70000"}) {
    setenv("KVAPP_VIEW", port, 1);
    EXPECT_EQ(FakePlugin::RunWith({"--host-pid", std::to_string(getpid())}), 2);
  }
  setenv("KVAPP_VIEW", std::to_string(first.address["port"].get<unsigned>()).c_str(), 1);
  EXPECT_EQ(FakePlugin::RunWith({"--host-pid", std::to_string(getpid())}), 2)
      << "the port is taken";
  unsetenv("KVAPP_VIEW");
}

}  // namespace kvapp::test
