// The order dialog on an order of N photos (500 unless QBPD_ORDER_BENCH_PHOTOS
// says otherwise): the time of each move between the steps and of repricing
// after a quantity change, as the program does them on the scripted host
// with the scripted service double (no network; for an account with a card
// the double answers the quote at once, so the figure is the program's own
// work). Only two photo slots are ever drawn. Prints the median and the
// worst of several rounds of each action. Run by hand.
#include "app/program/program.h"
#include "core/application.h"
#include "online/client_factory.h"
#include "online/scripted_service_client.h"
#include "platform/forms/scripted_host.h"
#include "platform/forms/user_input.h"
#include "platform/image_operations.h"
#include "platform/settings_store.h"
#include "printorder/frm_ord_prints.h"
#include "tests/support/temp_dir.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace qbpd {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr int kRounds = 15;

TextGrid Tiers(const char* a, const char* b, const char* c) {
  return TextGrid::FromRows(
      {{"1", "24", a}, {"25", "99", b}, {"100", "9999", c}});
}

class Bench {
 public:
  Bench(int photos, const std::string& status) {
    fs::create_directories(dir_.path() / "thumbs");
    for (int i = 1; i <= photos; ++i) {
      char name[32];
      std::snprintf(name, sizeof name, "p%04d.jpg", i);
      const std::string path = (dir_.path() / name).string();
      if (!WriteTestPhoto(path, 1200, 900, i)) {
        std::fprintf(stderr, "cannot write %s\n", path.c_str());
        std::exit(1);
      }
      paths_.push_back(path);
    }
    PlatformServices services;
    services.settings = MakeMemorySettingsStore();
    services.images = MakeVipsImageOperations((dir_.path() / "cache").string());
    services.make_client = [this] { return ForwardTo(*client_); };
    auto host = std::make_unique<ScriptedHost>();
    host_ = host.get();
    client_ = std::make_unique<ScriptedServiceClient>(*host_);
    PlaceOrderReply quote;
    quote.sizeTotals = TextGrid(4, 3);
    quote.freePrints = TextGrid::FromRows({{"", "", ""}});
    quote.orderTax = TextGrid::FromRows({{"CA", "7.25", "1.00"}});
    quote.couponResult = {"", "", "0", "0"};
    quote.shipping = "6.99";
    client_->SetDefault(quote);
    app_ = std::make_unique<Application>(std::move(host), std::move(services),
                                         RegisterProgram);
    Session& s = app_->session();
    s.gsAppTitle = "Quillbay Picture Desk";
    s.gsAccountStatus = status;
    s.gsThumbnailFolder = (dir_.path() / "thumbs").string() + "/";
    for (int i = 0; i < photos; ++i) {
      s.gcolOrderPhotos.Add(paths_[i], std::to_string(i + 1));
    }
  }

  frmOrdPrints& Open() {
    frmOrdPrints& d = app_->forms().Get<frmOrdPrints>();
    PrintOrderData& order = d.order();
    order.gdicPriceTiers.Add(1, Tiers("0.29", "0.25", "0.19"));
    order.gdicPriceTiers.Add(2, Tiers("0.99", "0.89", "0.79"));
    order.gdicPriceTiers.Add(3, Tiers("3.99", "3.49", "2.99"));
    order.gdicPriceTiers.Add(4, Tiers("1.49", "1.29", "1.09"));
    order.gsaShippingBands = TextGrid::FromRows({{"1", "25", "2.99"},
                                                 {"26", "50", "4.99"},
                                                 {"51", "100", "6.99"},
                                                 {"101", "0", "1.5"}});
    order.gsaUserAddress = {"", "Dana",          "Demo", "1 Market Street",
                            "", "San Francisco", "CA",   "94105"};
    order.gsaUserCard = {"Dana Demo", "XXXX-XXXX-XXXX-1111", "10", "2035",
                         "94105"};
    order.gsaShipTo = order.gsaUserAddress;
    return d;
  }

  // Runs `action` kRounds times after `before`; the times of the action
  // alone, in milliseconds.
  std::vector<double> Time(const std::function<void()>& before,
                           const std::function<void()>& action) {
    std::vector<double> ms;
    for (int r = 0; r < kRounds; ++r) {
      before();
      const auto t0 = Clock::now();
      action();
      ms.push_back(
          std::chrono::duration<double, std::milli>(Clock::now() - t0).count());
    }
    return ms;
  }

 private:
  testing::TempDir dir_;
  std::vector<std::string> paths_;
  ScriptedHost* host_ = nullptr;
  std::unique_ptr<ScriptedServiceClient> client_;
  std::unique_ptr<Application> app_;
};

void Report(const char* what, std::vector<double> ms) {
  std::sort(ms.begin(), ms.end());
  std::printf("%-44s median %7.2f ms   worst %7.2f ms\n", what,
              ms[ms.size() / 2], ms.back());
}

int Run(int photos) {
  std::printf("order of %d photos, %d rounds each\n", photos, kRounds);
  {
    Bench bench(photos, "LTE");
    frmOrdPrints& d = bench.Open();
    d.Show(/*modal=*/false);
    d.AddingIntoOrderPrints();
    int q = 1;
    Report("reprice after a quantity change (local)",
           bench.Time([&] { d.txtQty[0].SetText(std::to_string(++q % 900)); },
                      [&] { user::Click(d.imgS1RightUpdate); }));
    // The figures are only worth something if the work was done.
    const std::string last = d.order().gcolEditLines.Item(1)(0, 0);
    if (last != std::to_string(q % 900) ||
        !d.FieldValue("mbPriced").As<bool>()) {
      std::fprintf(stderr, "the repricing did not take %d (line holds %s)\n",
                   q % 900, last.c_str());
      return 1;
    }
    Report("page the slots (scroll by one)",
           bench.Time([] {},
                      [&] {
                        user::ScrollTo(
                            d.ctrlS1VScroll,
                            (d.ctrlS1VScroll.Value() + 1) % (photos - 1));
                      }));
    Report("step 1 to step 2 (Continue, repriced)",
           bench.Time(
               [&] {
                 if (d.FieldValue("miCurrentStep").As<int>() == 2) {
                   user::Click(d.imgS2Back);
                 }
                 d.txtQty[0].SetText(std::to_string(++q % 900));
               },
               [&] { user::Click(d.imgS1Continue); }));
    Report("step 2 back to step 1",
           bench.Time(
               [&] {
                 if (d.FieldValue("miCurrentStep").As<int>() == 1) {
                   user::Click(d.imgS1Continue);
                 }
               },
               [&] { user::Click(d.imgS2Back); }));
  }
  {
    Bench bench(photos, "FUL");
    frmOrdPrints& d = bench.Open();
    d.Show(/*modal=*/false);
    d.AddingIntoOrderPrints();
    const auto step = [&d] { return d.FieldValue("miCurrentStep").As<int>(); };
    // Brings the dialog to step 1 or 3 by the ways a person has.
    const auto go_to = [&](int target) {
      if (step() == 2) {
        user::Click(d.imgS2Back);
      }
      if (step() == 3 && target == 1) {
        user::Click(d.lblS3EditOrder);
      }
      if (step() == 1 && target == 3) {
        user::Click(d.imgS1Continue);
      }
    };
    int q = 1;
    Report("reprice after a quantity change (quote)",
           bench.Time(
               [&] {
                 go_to(1);
                 d.txtQty[0].SetText(std::to_string(++q % 900));
               },
               [&] { user::Click(d.imgS1RightUpdate); }));
    Report(
        "step 1 to review (Continue, priced)",
        bench.Time([&] { go_to(1); }, [&] { user::Click(d.imgS1Continue); }));
    Report(
        "review to step 2 (edit info)",
        bench.Time([&] { go_to(3); }, [&] { user::Click(d.imgS3EditInfo); }));
    Report("step 2 back to review", bench.Time(
                                        [&] {
                                          go_to(3);
                                          user::Click(d.imgS3EditInfo);
                                        },
                                        [&] { user::Click(d.imgS2Back); }));
    Report(
        "review to step 1 (edit order)",
        bench.Time([&] { go_to(3); }, [&] { user::Click(d.lblS3EditOrder); }));
  }
  return 0;
}

}  // namespace
}  // namespace qbpd

int main() {
  const char* env = std::getenv("QBPD_ORDER_BENCH_PHOTOS");
  const int photos = env != nullptr ? std::max(3, std::atoi(env)) : 500;
  try {
    return qbpd::Run(photos);
  } catch (const qbpd::HostAbort& abort) {
    std::fprintf(stderr, "the run stopped: %s\n", abort.message().c_str());
    return 1;
  }
}
