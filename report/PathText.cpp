// One path as text: its data's arrival, the required time, and the slack.
//
// Delays are the differences of the times as shown, so that both columns always add up. All times are those
// of the path rounded to ps, except the required time: it is the shown arrival plus (setup) or minus (hold)
// the shown slack. It differs from its own rounding by at most 1 ps, and only if the run's unit is finer than
// that.
#include "report/Numbers.h"
#include "report/Table.h"
#include "report/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <optional>
#include <ostream>

namespace Report {

namespace {

constexpr std::size_t numberWidth = 9;
constexpr std::size_t descriptionWidth = 48; // of the rules

// A line of the two columns. Times are absolute, in shown ps.
struct Line {
    std::optional<Time> delay;
    std::optional<Time> time;
    char edge = ' ';
    std::string description;
    Ink ink = Ink::plain;
};

std::string clockEdge(const std::string& clock, bool rise) {
    return fmt::format("clock {} ({} edge)", printable(clock), rise ? "rise" : "fall");
}

std::string networkDelay(bool propagated) {
    return fmt::format("clock network delay ({})", propagated ? "propagated" : "ideal");
}

std::string withNote(std::string_view text, std::string_view note) {
    return note.empty() ? printable(text) : fmt::format("{} ({})", printable(text), printable(note));
}

bool isDelayException(const std::optional<Exception>& exception) {
    return exception && (exception->kind == "max_delay" || exception->kind == "min_delay");
}

// A column of times, in units, to which delays are added; each step becomes a line.
class Column {
public:
    explicit Column(int scale) : scale_(scale) {}

    void step(Time delay, std::string description) { reach(time_ + delay, ' ', std::move(description)); }
    void reach(Time time, char edge, std::string description) {
        time_ = time;
        const Time ps = shownPs(time, scale_);
        lines_.push_back({ps - shown_, ps, edge, std::move(description)});
        shown_ = ps;
    }
    // Moves the last line to a time in shown ps.
    void land(Time ps) {
        shown_ = ps;
        if (lines_.empty())
            return;
        Line& last = lines_.back();
        *last.delay += ps - *last.time;
        last.time = ps;
    }

    Time time() const { return time_; }
    Time shown() const { return shown_; }
    std::vector<Line>& lines() { return lines_; }

private:
    int scale_;
    Time time_ = 0, shown_ = 0;
    std::vector<Line> lines_;
};

class PathPrinter {
public:
    PathPrinter(const Path& path, int scale, bool color, std::ostream& out)
        : path_(path), scale_(scale), color_(color), out_(out) {}

    void print() {
        const Time slack = shownSlackPs(path_.slack, scale_);
        Column arrival = arrivalSide();
        const Time required = arrival.shown() + (path_.setup ? slack : -slack);
        Column demand = requiredSide();
        demand.land(required);

        std::vector<std::vector<Line>> blocks;
        blocks.push_back(std::move(arrival.lines()));
        blocks.back().push_back({{}, arrival.shown(), ' ', "data arrival time"});
        blocks.push_back(std::move(demand.lines()));
        blocks.back().push_back({{}, required, ' ', "data required time"});
        blocks.push_back(balance(arrival.shown(), required, slack));
        header();
        printBlocks(blocks);
    }

private:
    Column arrivalSide() const {
        Column column(scale_);
        if (!path_.sourceClock.empty()) {
            column.step(path_.launchEdge, clockEdge(path_.sourceClock, path_.sourceRise));
            column.step(path_.launchClockDelay, networkDelay(path_.sourcePropagated));
        }
        if (path_.startsAtPort)
            column.step(path_.inputDelay, "input external delay");
        for (const Point& point : path_.points)
            column.reach(path_.launchEdge + point.arrival, point.edge == 0 ? ' ' : point.edge,
                         withNote(point.pin, point.cell));
        if (const Time end = path_.launchEdge + path_.arrival; column.time() != end)
            column.reach(end, ' ', "adjustment");
        return column;
    }

    Column requiredSide() const {
        Column column(scale_);
        if (isDelayException(path_.exception)) {
            if (path_.launchEdge != 0)
                column.step(path_.launchEdge, clockEdge(path_.sourceClock, path_.sourceRise));
            column.step(path_.relation, path_.exception->kind);
        } else if (!path_.targetClock.empty()) {
            column.step(path_.captureEdge, clockEdge(path_.targetClock, path_.targetRise));
        }
        if (!path_.targetClock.empty())
            column.step(path_.captureClockDelay, networkDelay(path_.targetPropagated));
        const Time harder = path_.setup ? -1 : 1; // what makes the requirement harder
        if (path_.uncertainty != 0)
            column.step(harder * path_.uncertainty, "clock uncertainty");
        if (path_.check)
            column.step(harder * *path_.check, path_.setup ? "library setup time" : "library hold time");
        if (path_.endsAtPort)
            column.step(-path_.outputDelay, "output external delay");
        const Time margin = path_.setup ? path_.slack : -path_.slack;
        if (const Time end = path_.launchEdge + path_.arrival + margin; column.time() != end)
            column.reach(end, ' ', "adjustment");
        return column;
    }

    // Setup subtracts the arrival from the required time, hold the required time from the arrival.
    std::vector<Line> balance(Time arrival, Time required, Time slack) const {
        std::vector<Line> lines;
        lines.push_back({{}, required, ' ', "data required time"});
        lines.push_back({{}, -arrival, ' ', "data arrival time"});
        if (!path_.setup) {
            lines = {{{}, arrival, ' ', "data arrival time"}, {{}, -required, ' ', "data required time"}};
        }
        const bool met = slack >= 0;
        lines.push_back(
            {{}, slack, ' ', met ? "slack (MET)" : "slack (VIOLATED)", met ? Ink::good : Ink::bad});
        return lines;
    }

    void header() const {
        out_ << "Startpoint: " << withNote(path_.startpoint, path_.startDescription) << '\n'
             << "Endpoint: " << withNote(path_.endpoint, path_.endDescription) << '\n'
             << "Path Group: " << (path_.group.empty() ? "(none)" : printable(path_.group)) << '\n'
             << "Path Type: " << (path_.setup ? "max" : "min") << '\n';
        if (const auto& exception = path_.exception)
            out_ << fmt::format("Exception: {}{}{} ({}:{})\n", exception->kind,
                                exception->value.empty() ? "" : " ", printable(exception->value),
                                printable(exception->file), exception->line);
        out_ << '\n';
    }

    void printBlocks(const std::vector<std::vector<Line>>& blocks) const {
        std::size_t delayWidth = numberWidth, timeWidth = numberWidth;
        for (const std::vector<Line>& block : blocks)
            for (const Line& line : block) {
                delayWidth = std::max(delayWidth, number(line.delay).size());
                timeWidth = std::max(timeWidth, number(line.time).size());
            }
        const std::string rule(delayWidth + timeWidth + descriptionWidth, '-');
        out_ << paint(fmt::format("{:>{}} {:>{}}   Description", "Delay", delayWidth, "Time", timeWidth),
                      Ink::title, color_)
             << '\n'
             << rule << '\n';
        for (std::size_t i = 0; i < blocks.size(); ++i) {
            if (i != 0)
                out_ << (i + 1 == blocks.size() ? rule : "") << '\n';
            for (const Line& line : blocks[i])
                out_ << fmt::format("{:>{}} {:>{}} {} {}\n", number(line.delay), delayWidth,
                                    number(line.time), timeWidth, line.edge,
                                    paint(line.description, line.ink, color_));
        }
    }

    static std::string number(const std::optional<Time>& ps) { return ps ? threeDigits(*ps) : ""; }

    const Path& path_;
    int scale_;
    bool color_;
    std::ostream& out_;
};

} // namespace

void writePath(const Path& path, int scale, bool color, std::ostream& out) {
    PathPrinter(path, scale, color, out).print();
}

} // namespace Report
