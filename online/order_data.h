#ifndef QBPD_ONLINE_ORDER_DATA_H_
#define QBPD_ONLINE_ORDER_DATA_H_

#include "core/keyed_collection.h"
#include "online/service_types.h"

#include <string>

namespace qbpd {

// The values of one print order, by the names the program gives them. The
// connection window fills the account's records and the price data, the
// order dialog works on the rest, and the upload engine takes the whole of
// it over when the order is bought. It lives in memory only.
struct PrintOrderData {
  // From GetUserInfo: the profile (five cells), the address (eight: 0
  // title, 1 first name, 2 last name, 3 street 1, 4 street 2, 5 city, 6
  // state, 7 zip) and the card (five: name, masked number, month counted
  // from 0, year, billing zip).
  StringArray gsaUserName;
  StringArray gsaUserAddress;
  StringArray gsaUserCard;
  // The address the order ships to, laid out like gsaUserAddress.
  StringArray gsaShipTo;
  // The order ships to an address that isn't the account's.
  bool gbShipToOther = false;
  // The address dialog saved a new address.
  bool gbAddressChanged = false;
  // One print line (four sizes by quantity, unit price, total) per photo,
  // under the photo's key; and the working copies that step 1 changes.
  PrintLineCollection gcolOrderLines;
  KeyedCollection<std::string> gcolEditPhotos;
  PrintLineCollection gcolEditLines;
  // Position (from 1) to path; after the upload, image id to position.
  TextDictionary gdicOrderIndex;
  // Size number (1 to 4) to its tiers (lower, upper, unit price).
  PriceTierDictionary gdicPriceTiers;
  // Rows of lower, upper, cost; the last row is the surcharge row.
  TextGrid gsaShippingBands;
  // Per size: total quantity, unit price, amount.
  TextGrid gsaSizeTotals;
  // Rows of quantity, value, size text.
  TextGrid gsaFreePrints;
  // Row 0: state, percent, amount.
  TextGrid gsaOrderTax;
  // 1 percent or refusal text, 2 discount, 3 "1" applied or "0" refused.
  StringArray gsaCouponResult;
  // The cost of prints and the shipping of the last quote.
  double mdCostOfPrints = 0;
  std::string msShipping;
};

}  // namespace qbpd

#endif  // QBPD_ONLINE_ORDER_DATA_H_
