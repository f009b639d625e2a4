#include "support/Finite.h"

#include <limits>
#include <vector>

#include <gtest/gtest.h>

namespace quellix {
namespace {

// At every place of lists of odd and even length.
TEST(AllFinite, FindsOneValueThatIsNoneAndNothingElse) {
  using Limits = std::numeric_limits<float>;
  const float finite[] = {0.0f,
                          -0.0f,
                          1.0f,
                          Limits::max(),
                          Limits::lowest(),
                          Limits::min(),
                          -Limits::min(),
                          Limits::denorm_min()};
  const float notFinite[] = {Limits::infinity(), -Limits::infinity(), Limits::quiet_NaN(),
                             -Limits::quiet_NaN(), Limits::signaling_NaN()};
  EXPECT_TRUE(AllFinite(nullptr, 0));
  for (std::size_t count = 1; count <= 9; ++count) {
    for (const float value : finite) {
      const std::vector<float> values(count, value);
      EXPECT_TRUE(AllFinite(values.data(), count)) << value;
      for (std::size_t place = 0; place < count; ++place) {
        for (const float wrong : notFinite) {
          std::vector<float> spoiled = values;
          spoiled[place] = wrong;
          EXPECT_FALSE(AllFinite(spoiled.data(), count)) << wrong << " at " << place;
        }
      }
    }
  }
}

}  // namespace
}  // namespace quellix
