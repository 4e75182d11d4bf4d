// The large inputs of tests/scale, one line each: the processor time of a run, the rise of the process's
// memory, and the number of arcs that the engine visits, per arc of the design. The command's runs read their
// files; the engine's begin with the design in memory.
//
// Every run has its own process, and so its own peak of memory. An argument selects the lines whose name
// contains it.
#include "Measure.h"
#include "Ruvex/Console.h"
#include "Vorlen/detail/Work.h"
#include "tests/scale/CommandInputs.h"
#include "tests/scale/EngineInputs.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

namespace {

template <class Work>
void measure(const char* name, std::size_t arcs, Work work) {
    const std::uint64_t visitsBefore = Vorlen::detail::visitedArcs;
    const bench::PeakMemory memory;
    const double seconds = bench::processorTimeOf(work);
    const auto visits = static_cast<double>(Vorlen::detail::visitedArcs - visitsBefore);
    std::printf("%-40s %9zu arcs %8.3f s %7.0f MB %7.1f visits/arc\n", name, arcs, seconds,
                memory.getRise() / (1 << 20), visits / static_cast<double>(arcs));
}

void runCommand(const char* name, Scale::Files& files) {
    const std::size_t arcs = files.getArcCount();
    const Analysis::SessionOptions options = files.write();
    measure(name, arcs, [&options] { Analysis::Session().run(options); });
}

void runEngine(const Scale::EngineInput& input) {
    Support::Builder design;
    input.build(design);
    const Support::ToolPointer tool = Support::makeTool();
    measure(input.name, Pelko::cell->getEdges().getCount(), [&tool] {
        if (!tool->launch())
            std::exit(EXIT_FAILURE);
    });
}

// Runs in a new process.
template <class Run>
void apart(const char* name, Run run) {
    std::fflush(stdout);
    if (const pid_t child = fork(); child != 0) {
        int status = 0;
        waitpid(child, &status, 0);
        if (status != 0)
            std::printf("%-40s failed\n", name);
        return;
    }
    Ruvex::console.setOutput(nullptr);
    run();
    std::fflush(stdout);
    _exit(EXIT_SUCCESS);
}

} // namespace

int main(int argc, char** argv) {
    const auto isChosen = [&](const char* name) {
        return argc < 2 || std::string(name).find(argv[1]) != std::string::npos;
    };
    const auto command = [&](const char* name, auto write) {
        if (isChosen(name))
            apart(name, [&] {
                Scale::Files files;
                write(files);
                runCommand(name, files);
            });
    };
    std::printf("the command\n");
    command("10,000 exceptions", Scale::writeExceptions);
    command("1,000 clocks", Scale::writeClocks);
    command("an end point of 100,000 launch points", Scale::writeWideEnd);
    command("a clock tree of 100,000 leaves", Scale::writeClockTree);
    command("150 gates that all lead to all others", [](Scale::Files& files) { writeLoop(files, 150); });
    std::printf("the engine\n");
    for (const Scale::EngineInput& input : Scale::engineInputs)
        if (isChosen(input.name))
            apart(input.name, [&input] { runEngine(input); });
    return EXIT_SUCCESS;
}
