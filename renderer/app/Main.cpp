#include <cstdio>
#include <exception>

#include "app/Platform.h"
#include "app/Session.h"
#include "app/Settings.h"

int main(int argumentCount, char** arguments) {
  try {
    kvapp::HandleSignals();
    return kvapp::Session(kvapp::ReadSettings(argumentCount, arguments)).Run();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "KvApp: %s\n", error.what());
    return 2;
  }
}
