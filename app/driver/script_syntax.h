#ifndef QBPD_APP_DRIVER_SCRIPT_SYNTAX_H_
#define QBPD_APP_DRIVER_SCRIPT_SYNTAX_H_

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace qbpd::script {

// A script line that can't be understood; reported with its line number
// before anything runs.
class ScriptSyntaxError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// One word of a line, or one text in double quotes.
struct Token {
  std::string text;
  bool quoted = false;
};

// Splits a line into words and quoted texts. `=`, `!=`, `<`, `>`, `<=` and
// `>=` are words of their own; `#` outside a text starts a comment (but `#3`
// is an entry number).
std::vector<Token> Tokenize(const std::string& line);

// FORM[.CONTROL[(INDEX)]][.PROPERTY[(ITEM)]]
struct Target {
  std::string form;
  std::string control;
  int index = -1;
  std::string property;
  int item = -1;
  std::string text;  // as written
};
// With `with_property`, the last part is the property (or, with two parts,
// the form's own property or named field).
Target ParseTarget(const std::string& text, bool with_property);

// A message box button by its name (OK, Cancel, Abort, Retry, Ignore, Yes,
// No), any case.
int ButtonId(const std::string& word);
// The button a person gets by pressing Enter on a box of this style.
int DefaultButton(int style);

// A text in double quotes, as the transcript shows it (line ends and NULs
// escaped).
std::string Quote(const std::string& s);

// A whole number.
int Number(const Token& t);
// Fails with "expected: USAGE" unless the line has `n` tokens.
void Require(const std::vector<Token>& t, size_t n, const std::string& usage);

// The comparisons of an expectation.
void CheckOperator(const std::string& op);
bool IsOrderOperator(const std::string& op);

// A point of a control, as written after "at", "from" or "to": "X,Y" in
// twips from the control's corner, or "photo X,Y" in photo pixels of a photo
// view. Reads from t[i] on and moves i past it.
struct ScriptPoint {
  bool photo = false;
  double x = 0;
  double y = 0;
};
ScriptPoint ParsePoint(const std::vector<Token>& t, size_t& i);
std::string Describe(const ScriptPoint& p);

}  // namespace qbpd::script

#endif  // QBPD_APP_DRIVER_SCRIPT_SYNTAX_H_
