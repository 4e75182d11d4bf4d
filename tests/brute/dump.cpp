// Writes a random design and its expected results.
// usage: dump SEED DIRECTORY none|single|overlapping [min|typ|max|minmax] [propagated|ideal] [nopads]
//
// DIRECTORY gets d.sdf, d.sdc, d.json, d.v and expected.csv: one line per end point with a slack, in byte
// order: endpoint,setup_ps,hold_ps,setup_pairs,hold_pairs. A pair is launch>capture#exception (counted from
// 0), and - is none. "nopads" leaves out what only a netlist with directions shows: pads, and connections
// without a delay.
#include "Analyse.h"
#include "Generate.h"
#include "Write.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>

namespace {

using namespace Brute;

std::string slack(const std::optional<SideResult>& side) { return side ? std::to_string(side->slack) : ""; }

std::string pairs(const std::optional<SideResult>& side) {
    std::string text;
    if (side)
        for (const Worst& w : side->pairs)
            text += (text.empty() ? "" : " ") + (w.launch.empty() ? "-" : w.launch) + ">" +
                    (w.capture.empty() ? "-" : w.capture) + "#" +
                    (w.exception == none ? "-" : std::to_string(w.exception));
    return text;
}

ExceptionMode exceptionMode(const std::string& word) {
    if (word == "none")
        return ExceptionMode::without;
    if (word == "single")
        return ExceptionMode::single;
    if (word == "overlapping")
        return ExceptionMode::overlapping;
    throw std::invalid_argument("expected none, single or overlapping, found '" + word + "'");
}

void write(const std::filesystem::path& file, const std::string& text) {
    std::ofstream out(file);
    out << text;
    out.close();
    if (!out)
        throw std::runtime_error("cannot write " + file.string());
}

void run(const std::vector<std::string>& words) {
    Shape shape;
    Options options;
    shape.exceptions = exceptionMode(words.at(2));
    for (std::size_t i = 3; i < words.size(); ++i) {
        if (words[i] == "nopads")
            shape.pads = shape.bareWires = false;
        else if (words[i] == "ideal" || words[i] == "propagated")
            options.propagated = words[i] == "propagated";
        else if (words[i] == "min")
            options.delays = DelayMode::minimum;
        else if (words[i] == "typ")
            options.delays = DelayMode::typical;
        else if (words[i] == "max")
            options.delays = DelayMode::maximum;
        else if (words[i] != "minmax")
            throw std::invalid_argument("unknown word '" + words[i] + "'");
    }
    const Design design = generate(std::stoull(words.at(0)), shape);
    const std::filesystem::path folder = words.at(1);
    std::filesystem::create_directories(folder);
    write(folder / "d.sdf", writeSdf(design));
    write(folder / "d.sdc", writeSdc(design));
    write(folder / "d.json", writeJson(design));
    write(folder / "d.v", writeVerilog(design));
    std::string rows = "endpoint,setup_ps,hold_ps,setup_pairs,hold_pairs\n";
    for (const auto& [name, end] : analyse(design, options))
        rows += name + "," + slack(end.setup) + "," + slack(end.hold) + "," + pairs(end.setup) + "," +
                pairs(end.hold) + "\n";
    write(folder / "expected.csv", rows);
}

} // namespace

int main(int count, char** words) {
    try {
        run({words + 1, words + count});
        return 0;
    } catch (const std::exception& e) {
        std::cerr << "dump: " << e.what()
                  << "\nusage: dump SEED DIRECTORY none|single|overlapping [min|typ|max|minmax]"
                  << " [propagated|ideal] [nopads]\n";
        return 2;
    }
}
