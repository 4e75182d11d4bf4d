// The command `vorlen`: reads options, writes a report, and returns an exit status.
#include "cli/Command.h"
#include "cli/Ending.h"

#include <iostream>
#include <sstream>

#include <fcntl.h>
#include <unistd.h>

namespace {

// A file that is opened must not get the number of a standard stream that was closed, since the stream's
// output would go into the file. Closed streams are replaced by one that cannot be written.
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
