#ifndef QBPD_PLATFORM_FORMS_PROPERTY_TABLES_H_
#define QBPD_PLATFORM_FORMS_PROPERTY_TABLES_H_

#include "platform/forms/control.h"

#include <iterator>

namespace qbpd {

// Builds a control kind's table: the common properties followed by its own.
inline PropertyTable WithCommon(PropertyTable own, PropertyTable common) {
  common.insert(common.end(), std::make_move_iterator(own.begin()),
                std::make_move_iterator(own.end()));
  return common;
}

}  // namespace qbpd

#endif  // QBPD_PLATFORM_FORMS_PROPERTY_TABLES_H_
