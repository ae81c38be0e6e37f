#include "ui/qt/qt_clipboard.h"

#include <QBuffer>
#include <QClipboard>
#include <QGuiApplication>
#include <QImage>
#include <QImageReader>
#include <QImageWriter>
#include <QMimeData>
#include <QPainter>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <random>
#include <string>
#include <unistd.h>

namespace qbpd {
namespace {

constexpr long long kMaxPixels = 256LL * 1000 * 1000;
// The quality of a pasted photo: a new file that the user keeps.
constexpr int kPasteQuality = 92;

bool WriteAll(int fd, const QByteArray& bytes) {
  const char* at = bytes.constData();
  qsizetype left = bytes.size();
  while (left > 0) {
    ssize_t n = ::write(fd, at, static_cast<size_t>(left));
    if (n < 0) {
      if (errno == EINTR) {
        continue;
      }
      return false;
    }
    at += n;
    left -= n;
  }
  return true;
}

void SyncFolder(const std::filesystem::path& folder) {
  int fd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd >= 0) {
    (void)::fsync(fd);
    ::close(fd);
  }
}

// Puts `bytes` at `path` whole or not at all, never over an existing file:
// a temporary file beside it is written and flushed, then linked into place
// (a link fails where a file already is) and the temporary name removed.
bool PlaceNewFile(const std::string& path, const QByteArray& bytes) {
  namespace fs = std::filesystem;
  fs::path target(path);
  fs::path folder =
      target.parent_path().empty() ? fs::path(".") : target.parent_path();
  std::random_device random;
  fs::path temp;
  int fd = -1;
  for (int attempt = 0; attempt < 16 && fd < 0; ++attempt) {
    char suffix[16];
    std::snprintf(suffix, sizeof suffix, "%08x", random());
    temp = folder / ("." + target.filename().string() + "." + suffix + ".tmp");
    fd = ::open(temp.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    if (fd < 0 && errno != EEXIST) {
      return false;
    }
  }
  if (fd < 0) {
    return false;
  }
  bool written = WriteAll(fd, bytes) && ::fsync(fd) == 0;
  written = ::close(fd) == 0 && written;
  if (!written) {
    ::unlink(temp.c_str());
    return false;
  }
  bool placed = ::link(temp.c_str(), target.c_str()) == 0;
  if (!placed && (errno == EPERM || errno == ENOTSUP || errno == EXDEV)) {
    // A file system without hard links: move it, having looked first.
    std::error_code ec;
    placed =
        !fs::exists(target, ec) && ::rename(temp.c_str(), target.c_str()) == 0;
  }
  ::unlink(temp.c_str());
  if (placed) {
    SyncFolder(folder);
  }
  return placed;
}

class QtClipboard final : public Clipboard {
 public:
  bool SetImageFromFile(const std::string& path) override {
    QImageReader reader(QString::fromStdString(path));
    // The kind is told by the file's bytes, not its name.
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(true);
    QSize size = reader.size();
    if (!size.isValid() ||
        static_cast<long long>(size.width()) * size.height() > kMaxPixels) {
      return false;
    }
    // Qt refuses images above its own limit (128 MB by default); the
    // program's bound is 256 megapixels of 4 bytes each.
    constexpr int kNeededMegabytes = static_cast<int>(kMaxPixels * 4 >> 20) + 1;
    if (QImageReader::allocationLimit() < kNeededMegabytes) {
      QImageReader::setAllocationLimit(kNeededMegabytes);
    }
    QImage image = reader.read();
    if (image.isNull()) {
      return false;
    }
    QGuiApplication::clipboard()->setImage(image);
    return true;
  }

  bool WriteImageAsJpeg(const std::string& path) override {
    std::error_code ec;
    if (path.empty() || std::filesystem::exists(path, ec)) {
      return false;
    }
    const QMimeData* data = QGuiApplication::clipboard()->mimeData();
    if (data == nullptr || !data->hasImage()) {
      return false;
    }
    QImage image = QGuiApplication::clipboard()->image();
    if (image.isNull()) {
      return false;
    }
    if (image.hasAlphaChannel()) {
      // JPEG has no transparency: it lies on white, as pasted pictures do.
      QImage flat(image.size(), QImage::Format_RGB32);
      flat.fill(Qt::white);
      QPainter painter(&flat);
      painter.drawImage(0, 0, image);
      painter.end();
      image = flat;
    }
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "jpeg");
    writer.setQuality(kPasteQuality);
    if (!writer.write(image.convertToFormat(QImage::Format_RGB888))) {
      return false;
    }
    return PlaceNewFile(path, bytes);
  }

  bool HasImage() const override {
    const QMimeData* data = QGuiApplication::clipboard()->mimeData();
    return data != nullptr && data->hasImage();
  }

  void Clear() override { QGuiApplication::clipboard()->clear(); }
};

}  // namespace

std::unique_ptr<Clipboard> MakeQtClipboard() {
  return std::make_unique<QtClipboard>();
}

}  // namespace qbpd
