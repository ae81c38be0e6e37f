#ifndef QBPD_PLATFORM_FORMS_PROPERTY_TABLES_H_
#define QBPD_PLATFORM_FORMS_PROPERTY_TABLES_H_

#include "platform/forms/control.h"
#include "platform/forms/runtime_error.h"

#include <iterator>
#include <string>

namespace qbpd {

// Builds a control kind's table: the common properties followed by its own.
inline PropertyTable WithCommon(PropertyTable own, PropertyTable common) {
  common.insert(common.end(), std::make_move_iterator(own.begin()),
                std::make_move_iterator(own.end()));
  return common;
}

// Refuses item `i` of a list of `count` items (an "Invalid item" error).
inline void CheckRange(int i, int count, const Control& c) {
  if (i < 0 || i >= count) {
    throw RuntimeError(kErrInvalidCall, "Invalid item " + std::to_string(i) +
                                            " of " + c.DisplayName());
  }
}

}  // namespace qbpd

#endif  // QBPD_PLATFORM_FORMS_PROPERTY_TABLES_H_
