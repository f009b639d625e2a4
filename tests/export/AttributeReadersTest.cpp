#include "export/AttributeReaders.h"

#include <functional>

#include <gtest/gtest.h>

#include "ModelBuilder.h"
#include "cw/AttributeDictionary.h"
#include "cw/Group.h"

namespace quellix {
namespace {

using Set = std::function<void(CW::TypedValue&)>;
const Set kInt = [](CW::TypedValue& v) { v.int32_value(3); };
const Set kFloat = [](CW::TypedValue& v) { v.float_value(2.5f); };
const Set kDouble = [](CW::TypedValue& v) { v.double_value(0.1); };
const Set kBool = [](CW::TypedValue& v) { v.bool_value(true); };
const Set kText = [](CW::TypedValue& v) { v.string_value("Glänzend"); };
const Set kColor = [](CW::TypedValue& v) { v.color_value({255, 128, 0, 255}); };

class AttributeReaders : public ::testing::Test {
 protected:
  void Put(const char* key, const Set& set) {
    CW::TypedValue value;
    set(value);
    ASSERT_TRUE(group.set_attribute("corvane_II", key, value));
    su_dictionary = FindUsableDictionary(group.entity_ref());
  }

  ModelBuilder model;
  CW::Group group{model.AddGroup(model.su_root)};
  SUAttributeDictionaryRef su_dictionary = SU_INVALID;
};

TEST_F(AttributeReaders, FindTheDictionaryByItsExactName) {
  EXPECT_TRUE(SUIsInvalid(FindDictionary(group.entity_ref())));
  EXPECT_TRUE(SUIsInvalid(FindDictionary(SUEntityRef SU_INVALID)));
  for (const char* name : {"corvane_I", "Corvane_II", "corvane_II ", "corvane_IIx"}) {
    group.attribute_dictionary(name);
  }
  EXPECT_TRUE(SUIsInvalid(FindDictionary(group.entity_ref())));
  EXPECT_EQ(group.attribute_dictionaries().size(), 4u) << "looking makes no dictionary";

  // One without keys is there, but sets nothing.
  const CW::AttributeDictionary own = group.attribute_dictionary("corvane_II");
  EXPECT_EQ(FindDictionary(group.entity_ref()).ptr, own.ref().ptr);
  EXPECT_TRUE(SUIsInvalid(FindUsableDictionary(group.entity_ref())));
  Put("k", kInt);
  EXPECT_EQ(su_dictionary.ptr, own.ref().ptr);
}

TEST_F(AttributeReaders, TakeOnlyTheTypesTheyAskFor) {
  struct Case {
    const char* what;
    const Set* stored;  // null for a missing key
    bool boolean;
    double real;
    double power;
    std::int32_t integer;
    const char* text;
    std::array<float, 4> color;
  };
  const std::array<float, 4> noColor = {0.1f, 0.2f, 0.3f, 0.4f};
  // Defaults: false, -1, -2, (always 0), "none", noColor.
  const Case cases[] = {
      {"missing", nullptr, false, -1, -2, 0, "none", noColor},
      {"integer", &kInt, false, -1, 3, 3, "none", noColor},
      {"float", &kFloat, false, -1, 2.5, 0, "none", noColor},
      {"double", &kDouble, false, 0.1, 0.1, 0, "none", noColor},
      {"bool", &kBool, true, -1, -2, 0, "none", noColor},
      {"text", &kText, false, -1, -2, 0, "Glänzend", noColor},
      {"colour", &kColor, false, -1, -2, 0, "none", {1.0f, 128 / 255.0f, 0.0f, 1.0f}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    for (const char* key : {"k", "light-power", "light_power", "light-color"}) {
      if (c.stored != nullptr) Put(key, *c.stored);
    }
    EXPECT_EQ(ReadBool(su_dictionary, "k", false), c.boolean);
    EXPECT_EQ(ReadDouble(su_dictionary, "k", -1), c.real);
    EXPECT_EQ(ReadPower(su_dictionary, -2), c.power);
    EXPECT_EQ(ReadInt(su_dictionary), c.integer);
    EXPECT_EQ(ReadString(su_dictionary, "k", "none"), c.text);
    EXPECT_EQ(ReadColor(su_dictionary, noColor), c.color);
  }
}

TEST_F(AttributeReaders, GiveDefaultsWithoutADictionary) {
  const SUAttributeDictionaryRef su_none = SU_INVALID;
  EXPECT_TRUE(ReadBool(su_none, "k", true));
  EXPECT_EQ(ReadDouble(su_none, "k", 0.7), 0.7);
  EXPECT_EQ(ReadPower(su_none, 0.7), 0.7);
  EXPECT_EQ(ReadInt(su_none), 0);
  EXPECT_EQ(ReadString(su_none, "k", "d"), "d");
  EXPECT_EQ(ReadColor(su_none, {1, 0, 1, 0}), (std::array<float, 4>{1, 0, 1, 0}));
}

TEST_F(AttributeReaders, TakeTheFirstOfTwoDictionaries) {
  SUAttributeDictionaryRef su_first = SU_INVALID;
  SUAttributeDictionaryRef su_second = SU_INVALID;
  ASSERT_EQ(SUAttributeDictionaryCreate(&su_first, "corvane_II"), SU_ERROR_NONE);
  ASSERT_EQ(SUAttributeDictionaryCreate(&su_second, "corvane_II"), SU_ERROR_NONE);
  ASSERT_EQ(SUEntityAddAttributeDictionary(group.entity_ref(), su_first), SU_ERROR_NONE);
  ASSERT_EQ(SUEntityAddAttributeDictionary(group.entity_ref(), su_second), SU_ERROR_NONE);
  EXPECT_EQ(FindDictionary(group.entity_ref()).ptr, su_first.ptr);
}

}  // namespace
}  // namespace quellix
