#include "Linux/Applications/BoundedFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace orvanta {

namespace {

class Descriptor {
public:
    explicit Descriptor(int number)
        : number_(number) {}
    ~Descriptor() {
        if (number_ >= 0) {
            ::close(number_);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int number() const { return number_; }

private:
    int number_;
};

} // namespace

std::optional<QByteArray> readBounded(const QByteArray& path, qsizetype limit, bool followLink) {
    const int flags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY | (followLink ? 0 : O_NOFOLLOW);
    const Descriptor file(::open(path.constData(), flags));
    struct stat status {};
    if (file.number() < 0 || ::fstat(file.number(), &status) != 0 || !S_ISREG(status.st_mode) ||
        status.st_size > limit) {
        return std::nullopt;
    }
    const qsizetype size = status.st_size;
    QByteArray content(size + 1, Qt::Uninitialized); // One more, to see that it has grown.
    qsizetype length = 0;
    while (length <= size) {
        const ssize_t got =
            ::read(file.number(), content.data() + length, static_cast<size_t>(size + 1 - length));
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0) {
            return std::nullopt;
        }
        if (got == 0) {
            content.truncate(length);
            return content;
        }
        length += got;
    }
    return std::nullopt;
}

} // namespace orvanta
