// The command `vorlen`: options in, a report out, and the exit status that says how it went.
#include "cli/Command.h"
#include "cli/Ending.h"

#include <iostream>
#include <sstream>

#include <fcntl.h>
#include <unistd.h>

namespace {

// A file that is opened must not take the place of a standard stream that was closed: what is meant for that
// would go into the file. In its place stands one that refuses to be written.
void keepStandardStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (fcntl(stream, F_GETFD) < 0)
            ::open("/dev/null", O_RDONLY | O_NOCTTY);
}

} // namespace

int main(int argc, char** argv) {
    keepStandardStreams();
    Cli::handleLackOfMemory();
    std::ostringstream answer;
    const Cli::Invocation invocation = Cli::parse(argc, argv, answer, std::cerr);
    Cli::handleSignals();
    if (invocation.exit)
        return Cli::printAnswer(answer.str(), *invocation.exit);
    return Cli::runCommand(invocation.options);
}
