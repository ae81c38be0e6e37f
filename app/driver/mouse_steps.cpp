// The mouse at a point of a control: click, double-click, drag and hover,
// in twips from the control's corner or in photo pixels of a photo view.
#include "app/driver/runner.h"
#include "platform/forms/controls.h"
#include "platform/forms/user_input.h"

namespace qbpd::script {
namespace {

user::ControlPoint ToControlPoint(const ScriptPoint& p) {
  return user::ControlPoint{p.x, p.y, p.photo};
}

std::string Landing(const user::PointOnControl& at) {
  std::string text =
      "mouse at twips " + std::to_string(at.x) + "," + std::to_string(at.y);
  if (at.on_photo_view) {
    text += " (photo " + FormatNumber(at.photo_x) + "," +
            FormatNumber(at.photo_y) + ")";
  }
  return text;
}

}  // namespace

std::optional<Step> Runner::ParseMouseStep(const std::vector<Token>& t) {
  const std::string& verb = t[0].text;
  Step s;
  if (verb == "click" || verb == "double-click" || verb == "hover") {
    const std::string usage =
        verb + (verb == "hover" ? " FORM.CONTROL at X,Y | at photo X,Y"
                                : " FORM.CONTROL [at X,Y | at photo X,Y]");
    if (t.size() < 4 || t[2].text != "at") {
      throw ScriptSyntaxError("expected: " + usage);
    }
    Target target = ParseTarget(t[1].text, false);
    size_t i = 3;
    ScriptPoint point = ParsePoint(t, i);
    if (i != t.size()) {
      throw ScriptSyntaxError("expected: " + usage);
    }
    s.run = [this, target, point, verb] {
      Control& c = ControlOf(target);
      const user::ControlPoint at = ToControlPoint(point);
      Report(Landing(user::Locate(c, at)));
      if (verb == "hover") {
        user::Hover(c, at);
      } else if (verb == "click") {
        user::ClickAt(c, at);
      } else {
        user::DblClickAt(c, at);
      }
    };
    return s;
  }
  if (verb == "drag") {
    const std::string usage =
        "drag FORM.CONTROL from [photo] X,Y to [photo] X,Y [in N steps]";
    if (t.size() < 6 || t[2].text != "from") {
      throw ScriptSyntaxError("expected: " + usage);
    }
    Target target = ParseTarget(t[1].text, false);
    size_t i = 3;
    ScriptPoint from = ParsePoint(t, i);
    if (i >= t.size() || t[i].text != "to") {
      throw ScriptSyntaxError("expected: " + usage);
    }
    ++i;
    ScriptPoint to = ParsePoint(t, i);
    if (from.photo != to.photo) {
      throw ScriptSyntaxError(
          "a drag's two points are both in photo pixels or both in twips");
    }
    int steps = 4;
    if (i < t.size()) {
      if (t.size() != i + 3 || t[i].text != "in" || t[i + 2].text != "steps") {
        throw ScriptSyntaxError("expected: " + usage);
      }
      steps = Number(t[i + 1]);
      if (steps < 1) {
        throw ScriptSyntaxError("a drag takes at least 1 step");
      }
    }
    s.run = [this, target, from, to, steps] {
      Control& c = ControlOf(target);
      Report(Landing(user::Locate(c, ToControlPoint(from))));
      user::Drag(c, ToControlPoint(from), ToControlPoint(to), steps);
    };
    return s;
  }
  return std::nullopt;
}

}  // namespace qbpd::script
