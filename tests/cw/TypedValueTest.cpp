#include "cw/TypedValue.h"

#include <functional>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

namespace {

struct Kind {
  const char* getter;
  const char* type;
  SUTypedValueType number;
  std::function<void(CW::TypedValue&)> set;
  std::function<bool(const CW::TypedValue&)> holds;  // calls the getter
};

const Kind kKinds[] = {
    {"byte_value", "Byte", SUTypedValueType_Byte, [](CW::TypedValue& v) { v.byte_value('q'); },
     [](const CW::TypedValue& v) { return v.byte_value() == 'q'; }},
    {"int32_value", "Int32", SUTypedValueType_Int32, [](CW::TypedValue& v) { v.int32_value(-5); },
     [](const CW::TypedValue& v) { return v.int32_value() == -5; }},
    {"float_value", "Float", SUTypedValueType_Float, [](CW::TypedValue& v) { v.float_value(2.5f); },
     [](const CW::TypedValue& v) { return v.float_value() == 2.5f; }},
    {"double_value", "Double", SUTypedValueType_Double,
     [](CW::TypedValue& v) { v.double_value(0.1); },
     [](const CW::TypedValue& v) { return v.double_value() == 0.1; }},
    {"bool_value", "Bool", SUTypedValueType_Bool, [](CW::TypedValue& v) { v.bool_value(true); },
     [](const CW::TypedValue& v) { return v.bool_value(); }},
    {"color_value", "Color", SUTypedValueType_Color,
     [](CW::TypedValue& v) {
       v.color_value({1, 2, 3, 4});
     },
     [](const CW::TypedValue& v) { return v.color_value().blue == 3; }},
    {"time_value", "Time", SUTypedValueType_Time,
     [](CW::TypedValue& v) { v.time_value(5'000'000'000); },
     [](const CW::TypedValue& v) { return v.time_value() == 5'000'000'000; }},
    {"string_value", "String", SUTypedValueType_String,
     [](CW::TypedValue& v) { v.string_value("Grün"); },
     [](const CW::TypedValue& v) { return v.string_value() == "Grün"; }},
    {"vector_value", "Vector3D", SUTypedValueType_Vector3D,
     [](CW::TypedValue& v) {
       v.vector_value({1, 2, 3});
     },
     [](const CW::TypedValue& v) { return v.vector_value().z == 3; }},
    {"typed_value_array", "Array", SUTypedValueType_Array,
     [](CW::TypedValue& v) {
       CW::TypedValue text;
       text.string_value("item");
       v.typed_value_array({CW::TypedValue(), text});
     },
     [](const CW::TypedValue& v) {
       const auto items = v.typed_value_array();
       return items.size() == 2 && items[1].string_value() == "item";
     }},
};

TEST(CwTypedValue, HoldsOneTypeAndRefusesTheOthers) {
  for (const Kind& kind : kKinds) {
    SCOPED_TRACE(kind.type);
    CW::TypedValue value;
    EXPECT_EQ(value.get_type(), SUTypedValueType_Empty);
    kind.set(value);
    EXPECT_EQ(value.get_type(), kind.number);
    EXPECT_TRUE(kind.holds(value));
    for (const Kind& other : kKinds) {
      if (&other == &kind) continue;
      try {
        other.holds(value);
        ADD_FAILURE() << other.getter << " accepted it";
      } catch (const std::logic_error& error) {
        EXPECT_EQ(std::string(error.what()), std::string("CW::TypedValue::") + other.getter +
                                                 "(): TypedValue is not SUTypedValueType_" +
                                                 other.type + " type");
      }
    }
  }
}

TEST(CwTypedValue, CopiesAreIndependentOfTheOriginal) {
  for (const Kind& kind : kKinds) {
    SCOPED_TRACE(kind.type);
    CW::TypedValue copy;
    {
      CW::TypedValue value;
      kind.set(value);
      copy = value;
      EXPECT_NE(copy.ref().ptr, value.ref().ptr);
      value.int32_value(0);
    }
    EXPECT_TRUE(kind.holds(copy));
  }
}

TEST(CwTypedValue, A16BitIntegerCannotBeCopied) {
  CW::TypedValue value;
  ASSERT_EQ(SUTypedValueSetInt16(value.ref(), 3), SU_ERROR_NONE);
  try {
    const CW::TypedValue copy = value;
    ADD_FAILURE() << "was copied";
  } catch (const std::logic_error& error) {
    EXPECT_STREQ(error.what(), "this part hasn't been made yet.");
  }
}

}  // namespace
