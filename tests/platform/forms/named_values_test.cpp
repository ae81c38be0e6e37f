#include "platform/forms/named_values.h"

#include "platform/forms/form.h"
#include "platform/forms/runtime_error.h"
#include "platform/forms/scripted_host.h"

#include <gtest/gtest.h>

namespace qbpd {
namespace {

class FieldsForm : public Form {
 public:
  explicit FieldsForm(Host& host) : Form(host, "frmFields") {
    Field("mbFitToWidth", mbFitToWidth);
    Field("miLastLoadedControl", miLastLoadedControl);
    Field("msName", msName);
  }
  bool mbFitToWidth = false;
  int miLastLoadedControl = 3;
  std::string msName = "a";
};

TEST(NamedValuesTest, AFormsFieldsAreReadAndWrittenThroughTheirMembers) {
  ScriptedHost host;
  FieldsForm form(host);
  EXPECT_TRUE(form.HasField("mbFitToWidth"));
  EXPECT_FALSE(form.HasField("Caption"));
  EXPECT_EQ(form.FieldValue("miLastLoadedControl"), Value(3));
  form.miLastLoadedControl = 7;
  EXPECT_EQ(form.FieldValue("miLastLoadedControl").ToText(), "7");
  form.SetFieldValue("mbFitToWidth", Value("True"));
  EXPECT_TRUE(form.mbFitToWidth);
  form.SetFieldValue("msName", Value(std::string("x\0y", 3)));
  EXPECT_EQ(form.msName, std::string("x\0y", 3));
  EXPECT_EQ(form.FieldNames(),
            (std::vector<std::string>{"mbFitToWidth", "miLastLoadedControl",
                                      "msName"}));
  try {
    form.FieldValue("mbNothing");
    FAIL();
  } catch (const RuntimeError& e) {
    EXPECT_EQ(std::string(e.what()), "Form frmFields has no value mbNothing");
  }
  EXPECT_THROW(form.SetFieldValue("mbNothing", Value(1)), RuntimeError);
}

}  // namespace
}  // namespace qbpd
