#include "platform/json_value.h"

#include <gtest/gtest.h>

#include <string>

namespace qbpd {
namespace {

TEST(JsonValueTest, ParsesAndWritesBackKeepingMemberOrder) {
  const std::string text =
      R"({"ok":true,"z":"last first","n":[1,2.5,null],"o":{"b":1,"a":2}})";
  std::optional<JsonValue> v = ParseJson(text);
  ASSERT_TRUE(v.has_value());
  EXPECT_TRUE(v->Find("ok")->boolean());
  EXPECT_EQ(v->members().front().first, "ok");
  EXPECT_EQ(v->Find("o")->members().front().first, "b");
  EXPECT_EQ(SerializeJson(*v), text);
}

TEST(JsonValueTest, ScalarsReadAsText) {
  struct Case {
    const char* json;
    const char* text;
  };
  const Case cases[] = {
      {R"("abc")", "abc"}, {"42", "42"},     {"-7", "-7"},
      {"2.5", "2.5"},      {"true", "True"}, {"false", "False"},
      {"null", ""},        {"[\"x\"]", ""},  {"1e21", "1e+21"},
  };
  for (const Case& c : cases) {
    std::optional<JsonValue> v = ParseJson(c.json);
    ASSERT_TRUE(v.has_value()) << c.json;
    EXPECT_EQ(v->AsText(), c.text) << c.json;
  }
}

TEST(JsonValueTest, TruthOfScalars) {
  for (const char* yes : {"true", "1", R"("True")", R"("1")"}) {
    EXPECT_TRUE(ParseJson(yes)->AsBool()) << yes;
  }
  for (const char* no : {"false", "0", R"("no")", "null", "[]"}) {
    EXPECT_FALSE(ParseJson(no)->AsBool()) << no;
  }
}

TEST(JsonValueTest, BadTextIsRefusedWithAReason) {
  const std::string too_deep = std::string(500, '[') + std::string(500, ']');
  for (const std::string& bad :
       {std::string("{\"a\":"), std::string("<html>"), std::string(""),
        std::string("[1,]"), too_deep}) {
    std::string error;
    EXPECT_FALSE(ParseJson(bad, &error).has_value()) << bad.substr(0, 20);
    EXPECT_FALSE(error.empty()) << bad.substr(0, 20);
  }
}

TEST(JsonValueTest, BuildsObjectsAndArraysForRequests) {
  JsonValue body = JsonValue::Object();
  body.Set("email", "a@x.test");
  body.Set("emails", JsonValue::Strings({"b@y.test", "c \"q\""}));
  body.Set("email", "again@x.test");  // replaces, keeps the place
  body.Set("flag", false);
  EXPECT_EQ(SerializeJson(body),
            R"({"email":"again@x.test","emails":["b@y.test","c \"q\""],)"
            R"("flag":false})");
  // Text that isn't UTF-8 still makes valid JSON.
  std::optional<JsonValue> back =
      ParseJson(SerializeJson(JsonValue(std::string("caf\xE9"))));
  ASSERT_TRUE(back.has_value());
  EXPECT_EQ(back->text().substr(0, 3), "caf");
}

}  // namespace
}  // namespace qbpd
