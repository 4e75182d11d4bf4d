#include "Relation.h"

#include <algorithm>
#include <tuple>

namespace Metamorphic {

namespace {

using nlohmann::json;

// Turns a list into an object with the members' names as keys, so that a difference is reported by name.
void name(json& list, const std::vector<std::string>& keys) {
    json named = json::object();
    for (json& item : list) {
        std::string text;
        for (const std::string& key : keys)
            text += (text.empty() ? "" : " ") + item.at(key).get<std::string>();
        named[text] = std::move(item);
    }
    list = std::move(named);
}

void drop(json& from, const std::vector<std::string>& keys) {
    if (from.is_object())
        for (const std::string& key : keys)
            from.erase(key);
    if (from.is_structured())
        for (json& item : from)
            drop(item, keys);
}

json comparable(json report, const std::vector<std::string>& apartFrom) {
    name(report.at("endpoints"), {"pin"});
    name(report.at("clocks"), {"name"});
    report.erase("inputs");
    drop(report, apartFrom);
    return report;
}

std::string told(const std::string& place, const std::string& before, const std::string& after) {
    return place + ": " + before + ", then " + after;
}

// The first difference between two values, depth first.
std::string firstDifference(const json& before, const json& after, const std::string& place) {
    if (before == after)
        return "";
    const std::string lead = place.empty() ? "" : place + "/";
    if (before.is_object() && after.is_object()) {
        for (const auto& [key, value] : before.items())
            if (const std::string text = after.contains(key) ? firstDifference(value, after[key], lead + key)
                                                             : told(lead + key, value.dump(), "nothing");
                !text.empty())
                return text;
        for (const auto& [key, value] : after.items())
            if (!before.contains(key))
                return told(lead + key, "nothing", value.dump());
    }
    if (before.is_array() && after.is_array())
        for (std::size_t i = 0; i < std::min(before.size(), after.size()); ++i)
            if (const std::string text = firstDifference(before[i], after[i], lead + std::to_string(i));
                !text.empty())
                return text;
    return told(place, before.dump(), after.dump());
}

std::string shown(std::optional<std::int64_t> slack) {
    return slack ? std::to_string(*slack) + " fs" : "none";
}

using Side = std::optional<std::int64_t> Slacks::*;
constexpr std::array<std::pair<const char*, Side>, 2> sides{
    {{"/setup_slack", &Slacks::setup}, {"/hold_slack", &Slacks::hold}}};

// The expected slack of an end point, from its earlier slack.
using Wanted =
    std::function<std::optional<std::int64_t>(const std::string& end, Side side, std::int64_t before)>;

std::string compare(const Outcome& before, const Outcome& after, const Wanted& wanted) {
    const std::map<std::string, Slacks> was = before.slacks(), is = after.slacks();
    for (const auto& [end, slacks] : was) {
        const auto place = is.find(end);
        const Slacks now = place == is.end() ? Slacks{} : place->second;
        for (const auto& [key, side] : sides) {
            const std::optional<std::int64_t> want =
                slacks.*side ? wanted(end, side, *(slacks.*side)) : std::nullopt;
            if (now.*side != want)
                return told(end + key, shown(slacks.*side),
                            shown(now.*side) + (want == slacks.*side ? "" : ", not " + shown(want)));
        }
    }
    for (const auto& [end, slacks] : is)
        if (!was.contains(end))
            return told(end, "nothing", shown(slacks.setup) + " and " + shown(slacks.hold));
    return "";
}

// Replaces each name in the text, as a whole word, by the earlier name.
void rename(json& value, const std::map<std::string, std::string>& names) {
    if (value.is_structured()) {
        for (json& item : value)
            rename(item, names);
        return;
    }
    if (!value.is_string())
        return;
    const std::string text = value;
    const std::size_t slash = text.rfind('/');
    if (const auto whole = names.find(text); whole != names.end())
        value = whole->second;
    else if (const auto cell = names.find(text.substr(0, slash));
             slash != std::string::npos && cell != names.end())
        value = cell->second + text.substr(slash);
}

bool isSame(const Files& a, const Files& b) {
    const auto all = [](const Files& f) {
        return std::tie(f.sdf, f.sdc, f.besides, f.netlist, f.netlistEnding, f.top, f.gzipped);
    };
    return all(a) == all(b);
}

} // namespace

Judge same(std::vector<std::string> apartFrom) {
    return [=](const Outcome& before, const Outcome& after, const Case&) {
        return firstDifference(comparable(before.report, apartFrom), comparable(after.report, apartFrom), "");
    };
}

Judge sameEndsRenamed() {
    return [](const Outcome& before, const Outcome& after, const Case& changed) {
        json reports[2] = {before.report, after.report};
        for (json& report : reports) {
            json kept = json::object();
            for (const char* key : {"summary", "clocks", "endpoints", "unconstrained"})
                kept[key] = report.at(key);
            if (&report == &reports[1])
                rename(kept, changed.names);
            report = comparable(std::move(kept), {});
        }
        return firstDifference(reports[0], reports[1], "");
    };
}

Judge sameSlacks() { return slacksTimes(1, 1); }

Judge slacksTimes(std::int64_t numerator, std::int64_t denominator) {
    return [=](const Outcome& before, const Outcome& after, const Case&) {
        return compare(before, after, [&](const std::string&, Side, std::int64_t slack) {
            return slack * numerator / denominator;
        });
    };
}

Judge slacksShifted(int setupTimes, int holdTimes) {
    return [=](const Outcome& before, const Outcome& after, const Case& changed) {
        constexpr std::int64_t femtoseconds = 1000;
        return compare(before, after, [&](const std::string& end, Side side, std::int64_t slack) {
            const bool shifted = changed.end.empty() || end == changed.end;
            const int times = side == &Slacks::setup ? setupTimes : holdTimes;
            return shifted ? slack + times * changed.amount * femtoseconds : slack;
        });
    };
}

Judge slacksOnly(Change setup, Change hold) {
    return [=](const Outcome& before, const Outcome& after, const Case&) {
        const std::map<std::string, Slacks> is = after.slacks();
        return compare(before, after, [&](const std::string& end, Side side, std::int64_t slack) {
            const auto place = is.find(end);
            if (place == is.end() || !(place->second.*side))
                return slack;
            const std::int64_t now = *(place->second.*side);
            const Change allowed = side == &Slacks::setup ? setup : hold;
            if ((allowed == Change::worse && now < slack) || (allowed == Change::better && now > slack))
                return now;
            return slack;
        });
    };
}

Judge onlyEndGone() {
    return [](const Outcome& before, const Outcome& after, const Case& changed) {
        return compare(before, after, [&](const std::string& end, Side, std::int64_t slack) {
            return end == changed.end ? std::nullopt : std::optional(slack);
        });
    };
}

Judge othersAdded() {
    return [](const Outcome& before, const Outcome& after, const Case&) {
        Outcome known = after;
        const std::map<std::string, Slacks> was = before.slacks();
        json& ends = known.report.at("endpoints");
        json kept = json::array();
        for (const json& end : ends)
            if (was.contains(end.at("pin")))
                kept.push_back(end);
        ends = std::move(kept);
        return compare(before, known, [](const std::string&, Side, std::int64_t slack) { return slack; });
    };
}

const std::vector<Relation>& allRelations() {
    static const std::vector<Relation> all = [] {
        std::vector<Relation> list;
        for (const auto table : {fileRelations, netlistRelations, scriptRelations, clockRelations,
                                 exceptionRelations, delayRelations})
            for (Relation& relation : table())
                list.push_back(std::move(relation));
        return list;
    }();
    return all;
}

std::optional<Verdict> judge(const Runner& runner, const Relation& relation, std::uint64_t seed,
                             const Brute::Shape& shape) {
    Case first(seed, shape);
    if (relation.prepare && !relation.prepare(first))
        return {};
    Case second = first;
    if (relation.change && !relation.change(second))
        return {};
    Verdict verdict;
    verdict.before = write(first), verdict.after = write(second);
    if (relation.rewrite)
        relation.rewrite(verdict.after, second.random);
    if (!relation.change && isSame(verdict.before, verdict.after))
        return {};
    const Outcome before = runner.run(verdict.before, first.options);
    const Outcome after = runner.run(verdict.after, second.options);
    if (!before.refused.empty() || !after.refused.empty())
        verdict.difference = told("refused", before.refused.empty() ? "not" : before.refused,
                                  after.refused.empty() ? "not" : after.refused);
    else
        verdict.difference = relation.holds(before, after, second);
    return verdict;
}

} // namespace Metamorphic
