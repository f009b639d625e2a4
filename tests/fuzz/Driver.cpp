// Runs a fuzz target without libFuzzer: its seeds, then mutations of them, always the same ones,
// for as long as it is told. `fuzz_x <seconds>`, or `fuzz_x <file>...` to run inputs that were
// found.

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

#include "Target.h"

namespace {

using fuzz::Bytes;

const Bytes* current = nullptr;

// Keeps the input that ended the process.
void SaveCurrent(int signal) {
  const int file = open("fuzz-crash.bin", O_CREAT | O_TRUNC | O_WRONLY, 0644);
  if (file >= 0 && current != nullptr) {
    const ssize_t written = write(file, current->data(), current->size());
    static_cast<void>(written);
  }
  const char text[] = "the input is in fuzz-crash.bin\n";
  const ssize_t written = write(STDERR_FILENO, text, sizeof text - 1);
  static_cast<void>(written);
  ::signal(signal, SIG_DFL);
  raise(signal);
}

void RunKept(const Bytes& input) {
  current = &input;
  fuzz::Run(input.data(), input.size());
}

class Mutator {
 public:
  explicit Mutator(const std::vector<Bytes>& seedInputs) : seeds(seedInputs) {}

  Bytes Next() {
    Bytes input = seeds[Below(seeds.size())];
    for (std::size_t i = 1 + Below(6); i > 0; --i) MutateOnce(input);
    return input;
  }

 private:
  std::size_t Below(std::size_t end) { return end == 0 ? 0 : random() % end; }

  void MutateOnce(Bytes& input) {
    static const std::uint64_t values[] = {0,
                                           1,
                                           2,
                                           3,
                                           4,
                                           7,
                                           8,
                                           23,
                                           24,
                                           25,
                                           31,
                                           32,
                                           40,
                                           64,
                                           127,
                                           128,
                                           255,
                                           256,
                                           4095,
                                           4096,
                                           4097,
                                           8191,
                                           8192,
                                           65535,
                                           0x7fffffff,
                                           0x80000000,
                                           0xffffffff,
                                           0x100000000,
                                           0x7ff0000000000000,
                                           0x7fffffffffffffff,
                                           0x8000000000000000,
                                           0xfffffffffffffff0,
                                           0xffffffffffffffff};
    if (input.empty()) input.push_back(0);
    switch (Below(6)) {
      case 0:
        input[Below(input.size())] ^= static_cast<std::uint8_t>(1u << Below(8));
        break;
      case 1:
        input[Below(input.size())] = static_cast<std::uint8_t>(Below(256));
        break;
      case 2: {  // a number where one may stand
        const std::size_t width = std::size_t{1} << Below(4);
        const std::uint64_t value = values[Below(std::size(values))];
        if (input.size() < width) break;
        const std::size_t at = Below(input.size() - width + 1) / width * width;
        std::memcpy(input.data() + at, &value, width);
        break;
      }
      case 3:
        input.resize(Below(input.size() + 1));
        break;
      case 4: {  // the rest of another
        const Bytes& other = seeds[Below(seeds.size())];
        const std::size_t at = Below(std::min(input.size(), other.size()));
        input.resize(at);
        input.insert(input.end(), other.begin() + static_cast<std::ptrdiff_t>(at), other.end());
        break;
      }
      default:
        input.insert(input.begin() + static_cast<std::ptrdiff_t>(Below(input.size())), 1 + Below(9),
                     static_cast<std::uint8_t>(Below(256)));
    }
  }

  const std::vector<Bytes>& seeds;
  std::mt19937_64 random{2027};
};

}  // namespace

int main(int argc, char** argv) {
  for (const int number : {SIGSEGV, SIGBUS, SIGABRT, SIGFPE, SIGILL}) signal(number, SaveCurrent);
  double seconds = 3;
  int files = 0;
  for (int i = 1; i < argc; ++i) {
    if (std::ifstream file{argv[i], std::ios::binary}) {
      RunKept(Bytes(std::istreambuf_iterator<char>(file), {}));
      ++files;
    } else {
      seconds = std::atof(argv[i]);
    }
  }
  if (files > 0) return 0;

  const std::vector<Bytes> seeds = fuzz::Seeds();
  for (const Bytes& seed : seeds) RunKept(seed);
  Mutator mutator(seeds);
  std::uint64_t runs = seeds.size();
  const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
  while (std::chrono::steady_clock::now() < end) {
    const Bytes input = mutator.Next();
    RunKept(input);
    ++runs;
  }
  std::printf("%llu inputs\n", static_cast<unsigned long long>(runs));
  return 0;
}
