// The progress line: when it is drawn, and that it fits one line.
#include "cli/Progress.h"

#include "base/Characters.h"
#include "cli/Terminal.h"

#include <algorithm>
#include <atomic>
#include <cerrno>

#include <unistd.h>

namespace Cli {

namespace {

constexpr std::chrono::milliseconds interval{100};
constexpr std::size_t usualColumns = 80;
constexpr std::string_view erase = "\r\x1b[K";
constexpr std::string_view ellipsis = "...";
constexpr unsigned all = 100;

// The descriptor on which a line is shown, for abandon(); or `none`.
constexpr int none = -1;
std::atomic<int> shownOn = none;
static_assert(std::atomic<int>::is_always_lock_free);

bool continuesCodePoint(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

// The text in at most that many bytes. Its middle is left out, at boundaries of code points.
std::string fitted(const std::string& text, std::size_t width) {
    if (text.size() <= width)
        return text;
    if (width <= ellipsis.size())
        return text.substr(0, 0);
    const std::size_t kept = width - ellipsis.size();
    std::size_t head = kept / 2;
    std::size_t tail = text.size() - (kept - head);
    while (head > 0 && continuesCodePoint(text[head]))
        --head;
    while (tail < text.size() && continuesCodePoint(text[tail]))
        ++tail;
    return text.substr(0, head) + std::string(ellipsis) + text.substr(tail);
}

// 100 only if everything is done, for any total.
unsigned percentOf(std::uint64_t done, std::uint64_t total) {
    if (total == 0 || done >= total)
        return all;
    return std::min(static_cast<unsigned>(static_cast<double>(done) / static_cast<double>(total) * all),
                    all - 1);
}

} // namespace

Progress::Progress(int descriptor, bool wanted, Clock::time_point (*now)())
    : descriptor_(descriptor), wanted_(wanted), now_(now) {}

void Progress::show(std::string_view step, std::uint64_t done, std::uint64_t total) {
    if (!wanted_)
        return;
    const unsigned percent = percentOf(done, total);
    if (visible_ && step == step_ && (percent == percent_ || now_() - drawn_ < interval))
        return;
    step_ = step;
    percent_ = percent;
    drawn_ = now_();
    const std::string end = total == 0 ? " ..." : " ... " + std::to_string(percent) + "%";
    // The last column stays free: some terminals wrap after it.
    const std::size_t width = columnsOf(descriptor_, usualColumns) - 1;
    const std::size_t room = width > end.size() ? width - end.size() : 0;
    draw(fitted(Base::printable(step_), room) + end.substr(0, width));
}

void Progress::clear() {
    if (!visible_)
        return;
    visible_ = false;
    shownOn = none;
    write(erase);
}

void Progress::abandon() noexcept {
    if (const int descriptor = shownOn; descriptor != none) [[maybe_unused]]
        const ssize_t written = ::write(descriptor, erase.data(), erase.size());
}

void Progress::draw(const std::string& line) {
    shownOn = descriptor_;
    write(std::string(erase) + line);
    visible_ = true;
}

// A terminal that was closed is no reason to end a run: the line is just not wanted any more.
void Progress::write(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor_, bytes.data(), bytes.size());
        if (written >= 0)
            bytes.remove_prefix(static_cast<std::size_t>(written));
        else if (errno != EINTR) {
            wanted_ = false;
            return;
        }
    }
}

} // namespace Cli
