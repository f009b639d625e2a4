// What the threads that read faces share without a lock.
#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <map>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "geometry/BlockList.h"
#include "geometry/HandleIndex.h"
#include "geometry/SharedArena.h"

namespace quellix {
namespace {

constexpr std::size_t kThreads = 4;

template <class Work>
void OnThreads(Work work) {
  std::atomic<std::size_t> ready{0};
  std::vector<std::thread> threads;
  for (std::size_t t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      ++ready;
      while (ready < kThreads) std::this_thread::yield();
      work(t);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

struct Thing {
  std::uint64_t key = 0;
};

// Every thread looks up all handles, each in an order of its own, while the table grows from its
// smallest size: whoever comes first lists the thing, and all others get that one.
TEST(HandleIndex, GivesEveryThreadTheSameIndexForAHandleWhileItGrows) {
  constexpr std::uint64_t kHandles = 20000;
  for (const std::uint64_t step :
       {std::uint64_t{1}, std::uint64_t{1} << 6, std::uint64_t{3} << 28}) {
    SCOPED_TRACE(step);
    HandleIndex index;
    BlockList<Thing> things;
    const auto keyAt = [&](std::uint32_t i) { return things[i].key; };
    std::vector<std::vector<std::uint32_t>> found(kThreads, std::vector<std::uint32_t>(kHandles));
    std::atomic<int> lost{0};
    OnThreads([&](std::size_t t) {
      constexpr std::uint64_t kStrides[kThreads] = {1, 7919, 19999, 3};
      auto next = static_cast<std::uint32_t>(things.Append());
      for (std::uint64_t k = 0; k < kHandles; ++k) {
        const std::uint64_t i = k * kStrides[t] % kHandles;
        const std::uint64_t key = (i + 1) * step;
        index.Expect(1);
        found[t][i] = index.FindOrInsert(key, next, keyAt, [&] { things[next].key = key; });
        if (found[t][i] == next) next = static_cast<std::uint32_t>(things.Append());
        if (index.Find(key, keyAt) != found[t][i]) ++lost;
      }
    });
    EXPECT_EQ(lost, 0) << "what was inserted is found, also in the middle of growing";
    std::vector<std::uint32_t> distinct = found[0];
    std::sort(distinct.begin(), distinct.end());
    EXPECT_EQ(std::unique(distinct.begin(), distinct.end()), distinct.end());
    for (std::uint64_t i = 0; i < kHandles; ++i) {
      ASSERT_EQ(things[found[0][i]].key, (i + 1) * step);
      for (std::size_t t = 1; t < kThreads; ++t) ASSERT_EQ(found[t][i], found[0][i]);
    }
    EXPECT_EQ(index.Find(kHandles * step + 1, keyAt), HandleIndex::kNone);
    index.Clear();
    EXPECT_EQ(index.Find(step, keyAt), HandleIndex::kNone);
  }
}

TEST(BlockList, ThreadsAppendRunsThatDoNotOverlapAndStayInPlace) {
  BlockList<Thing> list;
  std::vector<std::map<std::size_t, std::size_t>> runs(kThreads);
  OnThreads([&](std::size_t t) {
    for (std::size_t n = 0; n < 3000; ++n) {
      const std::size_t count = n % 17 + (n == 1500 ? 20000 : 1);
      const std::size_t first = list.Append(count);
      for (std::size_t i = 0; i < count; ++i) list[first + i].key += t + 1;
      runs[t][first] = count;
    }
  });
  std::size_t total = 0;
  for (std::size_t t = 0; t < kThreads; ++t) {
    for (const auto& [first, count] : runs[t]) {
      for (std::size_t i = 0; i < count; ++i) ASSERT_EQ(list[first + i].key, t + 1);
      total += count;
    }
  }
  EXPECT_EQ(list.Append(), total);
}

// Pieces larger than a block come in between small ones.
TEST(SharedArena, PiecesOfManyThreadsAreAlignedAndDoNotOverlap) {
  SharedArena arena;
  for (int round = 0; round < 2; ++round) {
    struct Piece {
      unsigned char* start;
      std::size_t bytes;
    };
    std::vector<std::vector<Piece>> pieces(kThreads);
    OnThreads([&](std::size_t t) {
      for (std::size_t n = 0; n < 2000; ++n) {
        const std::size_t bytes = n % 400 == 399 ? std::size_t{700} << 10 : n * 7 % 500 + 1;
        auto* const start = static_cast<unsigned char*>(arena.Allocate(bytes));
        std::memset(start, static_cast<int>(t + 1), bytes);
        pieces[t].push_back({start, bytes});
      }
    });
    for (std::size_t t = 0; t < kThreads; ++t) {
      for (const Piece& piece : pieces[t]) {
        ASSERT_EQ(reinterpret_cast<std::uintptr_t>(piece.start) % alignof(double), 0u);
        ASSERT_TRUE(std::all_of(piece.start, piece.start + piece.bytes,
                                [&](unsigned char byte) { return byte == t + 1; }));
      }
    }
    arena.Clear();
  }
}

}  // namespace
}  // namespace quellix
