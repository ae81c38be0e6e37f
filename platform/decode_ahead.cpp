#include "platform/decode_ahead.h"

#include "platform/whole_decode_mark.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

namespace qbpd {
namespace {

// The zoom a load leaves.
constexpr int kLoadedPercent = 100;

struct Decoded {
  std::shared_ptr<DisplayControl> model;
  // The file as it was when decoded: used only while it is still that.
  std::optional<FileIdentity> stamp;
};

class DecodeAheadModel final : public DecodeAheadDisplay {
 public:
  DecodeAheadModel(std::function<std::shared_ptr<DisplayControl>()> make,
                   std::shared_ptr<DisplayControl> first,
                   DecodeWait wait,
                   StandInLookup stand_in)
      : make_(std::move(make)),
        wait_(std::move(wait)),
        stand_in_(std::move(stand_in)),
        current_(std::move(first)) {}

  ~DecodeAheadModel() override {
    {
      std::lock_guard lock(mutex_);
      stopping_ = true;
      queue_.clear();
    }
    changed_.notify_all();
    if (worker_.joinable()) {
      worker_.join();
    }
  }

  void DecodeAhead(std::vector<std::string> paths) override {
    {
      std::lock_guard lock(mutex_);
      // The photo a stand-in shows stays wanted until it has replaced it.
      if (!refining_.empty() &&
          std::find(paths.begin(), paths.end(), refining_) == paths.end()) {
        paths.insert(paths.begin(), refining_);
      }
      wanted_ = paths;
      queue_.clear();
      for (auto it = ready_.begin(); it != ready_.end();) {
        if (std::find(paths.begin(), paths.end(), it->first) == paths.end()) {
          it = ready_.erase(it);
        } else {
          ++it;
        }
      }
      for (std::string& path : paths) {
        if (!path.empty() && ready_.count(path) == 0 && path != working_ &&
            std::find(queue_.begin(), queue_.end(), path) == queue_.end()) {
          queue_.push_back(std::move(path));
        }
      }
      wanted_width_ = width_;
      wanted_height_ = height_;
      if (!worker_.joinable() && !queue_.empty()) {
        worker_ = std::thread([this] { Work(); });
      }
    }
    changed_.notify_all();
  }

  void WaitUntilReady() override {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return queue_.empty() && working_.empty(); });
  }

  int LoadsDecodedAhead() const override { return served_; }

  // --- DisplayControl ------------------------------------------------------
  void SetViewSize(int width_px, int height_px) override {
    {
      std::lock_guard lock(mutex_);
      width_ = width_px;
      height_ = height_px;
    }
    Refine();
    current_->SetViewSize(width_px, height_px);
    if (!standing_in_.empty()) {
      replay_.push_back({Step::kViewSize, width_px, height_px});
    }
  }

  bool LoadPhoto(const std::string& path) override {
    EndStandIn();
    if (stand_in_ && !Ready(path) && StandIn(path)) {
      return true;
    }
    std::shared_ptr<DisplayControl> ahead = TakeDecoded(path);
    if (ahead) {
      ahead->SetViewSize(width_, height_);
      ahead->SetEventSink(sink_);
      current_ = std::move(ahead);
      fitted_ahead_ = true;
      ++served_;
      return true;
    }
    // Decoded apart into a model of its own, so that the one on show stays
    // whole until the new one is there; a failed load leaves it as it was.
    std::shared_ptr<DisplayControl> loaded = LoadApart(path);
    if (!loaded) {
      return false;
    }
    loaded->SetEventSink(sink_);
    current_ = std::move(loaded);
    fitted_ahead_ = false;
    return true;
  }
  void PrepareLoad(const std::vector<std::string>& paths) override {
    DecodeAhead(paths);
  }
  void Clear() override {
    EndStandIn();
    current_->Clear();
    fitted_ahead_ = false;
  }
  bool HasPhoto() const override { return current_->HasPhoto(); }
  bool Refining() const override { return !standing_in_.empty(); }
  bool ZoomFitToWidth() override {
    Refine();
    if (!current_->ZoomFitToWidth()) {
      return false;
    }
    fitted_ahead_ = false;
    if (!standing_in_.empty()) {
      replay_.push_back({Step::kFit, 0, 0});
    }
    return true;
  }
  bool ZoomTo(int percent) override {
    Settle();
    if (!current_->ZoomTo(percent)) {
      return false;
    }
    fitted_ahead_ = false;
    return true;
  }
  // A photo decoded ahead comes fitted, where a load leaves the zoom at
  // 100%: until the next zoom, the zoom and the shown size are told as
  // 100%, and anything drawn or pointed at first sets the zoom it tells.
  int ZoomPercent() const override {
    return fitted_ahead_ ? kLoadedPercent : current_->ZoomPercent();
  }
  bool RotateView(int degrees) override {
    Refine();
    if (!current_->RotateView(degrees)) {
      return false;
    }
    if (!standing_in_.empty()) {
      replay_.push_back({Step::kRotate, degrees, 0});
    }
    return true;
  }
  int ViewRotation() const override { return current_->ViewRotation(); }
  int PhotoWidth() const override { return current_->PhotoWidth(); }
  int PhotoHeight() const override { return current_->PhotoHeight(); }
  int ShownWidth() const override {
    return fitted_ahead_ ? current_->PhotoWidth() : current_->ShownWidth();
  }
  int ShownHeight() const override {
    return fitted_ahead_ ? current_->PhotoHeight() : current_->ShownHeight();
  }
  bool Render(int x,
              int y,
              int w,
              int h,
              std::vector<std::uint8_t>& rgb) override {
    Refine();
    return AtToldZoom() && current_->Render(x, y, w, h, rgb);
  }
  // A tool is on the photo's own pixels (starting one waited for them):
  // over a stand-in the mouse meets no tool and need not wait.
  bool ToolMouseDown(double x, double y, int button) override {
    Refine();
    return AtToldZoom() && current_->ToolMouseDown(x, y, button);
  }
  bool ToolMouseMove(double x, double y, int buttons) override {
    Refine();
    return AtToldZoom() && current_->ToolMouseMove(x, y, buttons);
  }
  void ToolMouseUp(double x, double y, int button) override {
    Refine();
    if (AtToldZoom()) {
      current_->ToolMouseUp(x, y, button);
    }
  }
  void SetEventSink(EventSink sink) override {
    sink_ = sink;
    current_->SetEventSink(std::move(sink));
  }
  // The editor's tools work over the photo's own pixels: they wait for it.
  // Ending them or showing the photo as loaded needs nothing of it.
  bool SetCropAspect(int aspect_x, int aspect_y) override {
    Settle();
    return current_->SetCropAspect(aspect_x, aspect_y);
  }
  void ClearEdit() override {
    Refine();
    current_->ClearEdit();
  }
  void BeginRedEye(int mode, int option) override {
    Settle();
    current_->BeginRedEye(mode, option);
  }
  bool ShowCorrected() override {
    Settle();
    return current_->ShowCorrected();
  }
  void ShowOriginal() override {
    Refine();
    current_->ShowOriginal();
  }
  int FinishCorrection(bool write, const std::string& path) override {
    Settle();
    return current_->FinishCorrection(write, path);
  }
  bool SaveShownPhoto(const std::string& path) override {
    Settle();
    return current_->SaveShownPhoto(path);
  }
  bool SaveCropped(const std::string& path) override {
    Settle();
    return current_->SaveCropped(path);
  }
  Tool ActiveTool() const override { return current_->ActiveTool(); }
  bool CropBox(double& x, double& y, double& w, double& h) const override {
    return current_->CropBox(x, y, w, h);
  }

 private:
  // What the caller did to a stand-in, done again in order to the photo
  // that replaces it.
  enum class Step { kViewSize, kFit, kRotate };
  struct Replay {
    Step step;
    int a;
    int b;
  };

  // Shows the stand-in for `path`, if there is one, and has the photo
  // decoded first on the worker; false when the load must go the plain way.
  bool StandIn(const std::string& path) {
    std::optional<RgbPicture> picture = stand_in_(path);
    std::shared_ptr<DisplayControl> model =
        picture && make_ ? make_() : nullptr;
    if (!model) {
      return false;
    }
    model->SetViewSize(width_, height_);
    if (!model->LoadPhotoStandIn(path, picture->width, picture->height,
                                 picture->pixels)) {
      return false;
    }
    {
      std::lock_guard lock(mutex_);
      refining_ = path;
      if (std::find(wanted_.begin(), wanted_.end(), path) == wanted_.end()) {
        wanted_.insert(wanted_.begin(), path);
      }
      if (working_ != path && ready_.count(path) == 0) {
        std::erase(queue_, path);
        queue_.push_front(path);
        wanted_width_ = width_;
        wanted_height_ = height_;
      }
      if (!worker_.joinable()) {
        worker_ = std::thread([this] { Work(); });
      }
    }
    changed_.notify_all();
    model->SetEventSink(sink_);
    current_ = std::move(model);
    fitted_ahead_ = false;
    standing_in_ = path;
    stand_in_width_ = width_;
    stand_in_height_ = height_;
    replay_.clear();
    return true;
  }

  bool Ready(const std::string& path) {
    std::lock_guard lock(mutex_);
    return ready_.count(path) > 0;
  }

  // Puts the decoded photo in the stand-in's place once it is there.
  void Refine() {
    if (standing_in_.empty()) {
      return;
    }
    std::unique_lock lock(mutex_);
    if (ready_.count(standing_in_) == 0 &&
        (working_ == standing_in_ || std::find(queue_.begin(), queue_.end(),
                                               standing_in_) != queue_.end())) {
      return;
    }
    lock.unlock();
    Settle();
  }

  // Waits for the decoded photo and puts it in the stand-in's place. A
  // photo the worker could not give is loaded the plain way; when that
  // fails too, the stand-in stays and decodes by itself what it must.
  void Settle() {
    if (standing_in_.empty()) {
      return;
    }
    const std::string path = standing_in_;
    std::unique_lock lock(mutex_);
    WaitUntil(lock, [&] {
      return working_ != path &&
             std::find(queue_.begin(), queue_.end(), path) == queue_.end();
    });
    // A paint during the wait may have put the photo in place already.
    if (standing_in_ != path) {
      return;
    }
    std::shared_ptr<DisplayControl> fine;
    bool fitted = false;
    if (auto it = ready_.find(path); it != ready_.end()) {
      if (it->second.model && it->second.stamp == IdentityOfPath(path)) {
        fine = std::move(it->second.model);
        fitted = true;
      }
      ready_.erase(it);
    }
    refining_.clear();
    lock.unlock();
    std::vector<Replay> replay = std::move(replay_);
    standing_in_.clear();
    replay_.clear();
    if (!fine) {
      fine = LoadApart(path);
    }
    if (!fine) {
      return;
    }
    fine->SetViewSize(stand_in_width_, stand_in_height_);
    fine->SetEventSink(sink_);
    current_ = std::move(fine);
    fitted_ahead_ = fitted;
    if (fitted) {
      ++served_;
    }
    for (const Replay& step : replay) {
      switch (step.step) {
        case Step::kViewSize:
          current_->SetViewSize(step.a, step.b);
          break;
        case Step::kFit:
          ZoomFitToWidth();
          break;
        case Step::kRotate:
          RotateView(step.a);
          break;
      }
    }
    current_->SetViewSize(width_, height_);
  }

  // Drops the stand-in's wish: the photo it stood for is no longer shown.
  void EndStandIn() {
    if (standing_in_.empty()) {
      return;
    }
    standing_in_.clear();
    replay_.clear();
    std::lock_guard lock(mutex_);
    refining_.clear();
  }

  // Brings a model that came fitted to the 100% it told; false when it
  // cannot be shown at 100%, as a plain load would fail to.
  bool AtToldZoom() {
    if (fitted_ahead_) {
      if (!current_->ZoomTo(kLoadedPercent)) {
        return false;
      }
      fitted_ahead_ = false;
    }
    return true;
  }

  // The model decoded ahead for `path`, if it is there and still the file's
  // picture; waits for it when it is being decoded now. One not yet begun
  // is taken off the list: the caller loads it at once rather than wait for
  // the worker to start on it, and it is not decoded twice.
  std::shared_ptr<DisplayControl> TakeDecoded(const std::string& path) {
    std::unique_lock lock(mutex_);
    std::erase(queue_, path);
    WaitUntil(lock, [&] { return working_ != path; });
    auto it = ready_.find(path);
    if (it == ready_.end()) {
      return nullptr;
    }
    Decoded decoded = std::move(it->second);
    ready_.erase(it);
    lock.unlock();
    if (!decoded.model || decoded.stamp != IdentityOfPath(path)) {
      return nullptr;
    }
    return decoded.model;
  }

  // A plain model loaded with `path` at the view size of now, or null when
  // the load fails. The decoding runs on a thread of its own while this one
  // waits through `wait_`.
  std::shared_ptr<DisplayControl> LoadApart(const std::string& path) {
    std::shared_ptr<DisplayControl> loaded;
    // What the load needs is taken now: the view's size may change while
    // this thread waits.
    RunApart(
        [&loaded, make = make_, path, width = width_, height = height_] {
          std::shared_ptr<DisplayControl> model = make ? make() : nullptr;
          if (model) {
            model->SetViewSize(width, height);
            if (!model->LoadPhoto(path)) {
              model.reset();
            }
          }
          loaded = std::move(model);
        },
        wait_);
    return loaded;
  }

  // Waits until `ready` holds under `lock`: through `wait_` when there is
  // one (the lock is let go meanwhile), else on the condition.
  void WaitUntil(std::unique_lock<std::mutex>& lock,
                 const std::function<bool()>& ready) {
    if (!wait_) {
      changed_.wait(lock, ready);
      return;
    }
    while (!ready()) {
      lock.unlock();
      wait_([&] {
        std::lock_guard check(mutex_);
        return ready();
      });
      lock.lock();
    }
  }

  void Work() {
    std::unique_lock lock(mutex_);
    while (true) {
      changed_.wait(lock, [this] { return stopping_ || !queue_.empty(); });
      if (stopping_) {
        return;
      }
      working_ = queue_.front();
      queue_.pop_front();
      const int width = wanted_width_;
      const int height = wanted_height_;
      const std::string path = working_;
      lock.unlock();
      Decoded decoded = Decode(path, width, height);
      lock.lock();
      // A photo the wish dropped meanwhile is thrown away.
      const bool still_wanted =
          !stopping_ &&
          std::find(wanted_.begin(), wanted_.end(), path) != wanted_.end();
      if (still_wanted) {
        ready_[path] = std::move(decoded);
      }
      working_.clear();
      changed_.notify_all();
    }
  }

  // Loads, fits and renders the view's first screen once, so that the
  // shown picture is made before it is asked for.
  Decoded Decode(const std::string& path, int width, int height) {
    Decoded decoded;
    decoded.stamp = IdentityOfPath(path);
    std::shared_ptr<DisplayControl> model = make_ ? make_() : nullptr;
    if (!model) {
      return decoded;
    }
    model->SetViewSize(width, height);
    if (!model->LoadPhoto(path) || !model->ZoomFitToWidth()) {
      return decoded;
    }
    std::vector<std::uint8_t> rgb;
    model->Render(0, 0, std::max(1, model->ShownWidth()),
                  std::max(1, std::min(model->ShownHeight(), height)), rgb);
    decoded.model = std::move(model);
    return decoded;
  }

  std::function<std::shared_ptr<DisplayControl>()> make_;
  DecodeWait wait_;
  StandInLookup stand_in_;
  std::shared_ptr<DisplayControl> current_;
  // The photo whose stand-in is on show, the view size it was loaded at,
  // and what was done to it since.
  std::string standing_in_;
  int stand_in_width_ = 0;
  int stand_in_height_ = 0;
  std::vector<Replay> replay_;
  EventSink sink_;
  int served_ = 0;
  // The model on show came from a decoding ahead and is still at the fit
  // it was made with, while the caller was told 100%.
  bool fitted_ahead_ = false;

  std::mutex mutex_;
  std::condition_variable changed_;
  std::thread worker_;
  bool stopping_ = false;
  std::deque<std::string> queue_;
  std::vector<std::string> wanted_;
  std::string working_;
  // `standing_in_`, for the worker's side.
  std::string refining_;
  std::map<std::string, Decoded> ready_;
  int width_ = 0;
  int height_ = 0;
  int wanted_width_ = 0;
  int wanted_height_ = 0;
};

}  // namespace

void RunApart(const std::function<void()>& work, const DecodeWait& wait) {
  std::atomic<bool> done{false};
  auto run = [&work, &done] {
    work();
    done.store(true, std::memory_order_release);
  };
  std::jthread thread;
  try {
    thread = std::jthread(run);
  } catch (const std::system_error&) {
    run();  // no thread to be had: the same work, on this one
    return;
  }
  if (wait) {
    wait([&done] { return done.load(std::memory_order_acquire); });
  }
  thread.join();
}

std::unique_ptr<DecodeAheadDisplay> MakeDecodeAheadDisplay(
    std::function<std::shared_ptr<DisplayControl>()> make,
    DecodeWait wait,
    StandInLookup stand_in) {
  std::shared_ptr<DisplayControl> first = make ? make() : nullptr;
  if (!first) {
    return nullptr;
  }
  return std::make_unique<DecodeAheadModel>(
      std::move(make), std::move(first), std::move(wait), std::move(stand_in));
}

}  // namespace qbpd
