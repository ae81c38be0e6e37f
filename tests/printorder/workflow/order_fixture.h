#ifndef QBPD_TESTS_PRINTORDER_WORKFLOW_ORDER_FIXTURE_H_
#define QBPD_TESTS_PRINTORDER_WORKFLOW_ORDER_FIXTURE_H_

#include "printorder/frm_ord_prints.h"
#include "tests/online/online_fixture.h"

#include <string>
#include <vector>

namespace qbpd::testing_support {

// The account of a print order as GetUserInfo gives it.
GetUserInfoReply Account(const std::string& status,
                         bool with_address = true,
                         bool with_card = true);
// The reference price list: 4 x 6 in three tiers, 5 x 7 in two, 8 x 10 and
// wallets in one; bands to 100 and the surcharge row from 101.
GetPriceListReply PriceList();
// A quote: per-size quantities and amounts, the cost of prints, shipping
// and tax (state, percent, amount).
PlaceOrderReply Quote(const std::vector<std::string>& quantities,
                      const std::vector<std::string>& prices,
                      const std::vector<std::string>& amounts,
                      double cost,
                      const std::string& shipping,
                      const std::vector<std::string>& tax = {"CA", "0", "0"});

// The program on the scripted host, logged in by the stored login, with
// `photos` photos checked; the order button then opens the dialog.
class OrderTest : public OnlineTest {
 protected:
  void OpenOrder(int photos,
                 GetUserInfoReply account,
                 const std::string& express = "",
                 bool write_photos = true);
  frmOrdPrints& dialog() { return app().forms().Get<frmOrdPrints>(); }
  // Queues `check` to run on the open dialog.
  void OnDialog(const std::string& what,
                std::function<void(frmOrdPrints&)> check);
};

}  // namespace qbpd::testing_support

#endif  // QBPD_TESTS_PRINTORDER_WORKFLOW_ORDER_FIXTURE_H_
