// A handler that writes every event down as a line.
#pragma once

#include "readers/sdf/Handler.h"

#include <string>
#include <vector>

namespace Support {

class EventLog : public Readers::Sdf::Handler {
public:
    using Path = Readers::Sdf::Path;
    using Event = Readers::Sdf::Event;
    using Value = Readers::Sdf::Value;
    using Values = std::span<const Value>;

    // Places are written where this is set: "@line:column".
    bool withPlaces = false;

    const std::vector<std::string>& lines() const { return lines_; }

    void header(const Readers::Sdf::Header& header) override {
        add("header version=" + std::string(header.version) + " design=" + std::string(header.design) +
            " program=" + std::string(header.program) + " divider=" + header.divider +
            " scale=" + std::to_string(header.scale));
    }
    void cell(std::string_view type, std::string_view instance, std::span<const std::uint32_t>,
              Base::Position where) override {
        add("cell " + std::string(type) + " <" + std::string(instance) + ">", where);
    }
    void endCell() override { add("end"); }
    void ioPath(const Event& from, const Path& to, Values values, bool conditional, bool increment,
                Base::Position where) override {
        add(std::string(conditional ? "conditional " : "") + "iopath " + text(from) + " " + text(to) +
                text(values, increment),
            where);
    }
    void interconnect(const Path& from, const Path& to, Values values, bool increment,
                      Base::Position where) override {
        add("interconnect " + text(from) + " " + text(to) + text(values, increment), where);
    }
    void port(const Path& to, Values values, bool increment, Base::Position where) override {
        add("port " + text(to) + text(values, increment), where);
    }
    void netDelay(const Path& net, Values values, bool increment, Base::Position where) override {
        add("net " + text(net) + text(values, increment), where);
    }
    void device(const std::optional<Path>& output, Values values, bool increment,
                Base::Position where) override {
        add("device " + (output ? text(*output) : "*") + text(values, increment), where);
    }
    void check(Readers::Sdf::CheckKind kind, const Event& data, const Event& clock, Values values,
               Base::Position where) override {
        constexpr const char* names[] = {"setup",  "hold", "setuphold", "recovery", "removal",
                                         "recrem", "skew", "width",     "period",   "nochange"};
        const bool pair = !data.path.pin.empty();
        add(std::string(names[static_cast<std::size_t>(kind)]) + " " + (pair ? text(data) + " " : "") +
                text(clock) + text(values, false),
            where);
    }
    void ignored(std::string_view keyword, Base::Position where) override {
        add("ignored " + std::string(keyword), where);
    }

private:
    static std::string text(const Path& path) {
        return (path.instance.empty() ? "" : "{" + std::string(path.instance) + "}") + std::string(path.pin);
    }
    static std::string text(const Event& event) {
        using Design::Transition;
        return std::string(event.conditional ? "?" : "") +
               (event.edge == Transition::rise   ? "^"
                : event.edge == Transition::fall ? "v"
                                                 : "") +
               text(event.path);
    }
    static std::string text(const std::optional<Base::Decimal>& number) {
        return number ? number->toString() : "_";
    }
    static std::string text(Values values, bool increment) {
        std::string all = increment ? " +" : "";
        for (const Value& value : values)
            all += value.isEmpty() ? " ()"
                                   : " (" + text(value.minimum) + " " + text(value.typical) + " " +
                                         text(value.maximum) + ")";
        return all;
    }
    void add(std::string line) { lines_.push_back(std::move(line)); }
    void add(std::string line, Base::Position where) {
        if (withPlaces)
            line += " @" + std::to_string(where.line) + ":" + std::to_string(where.column);
        add(std::move(line));
    }

    std::vector<std::string> lines_;
};

} // namespace Support
