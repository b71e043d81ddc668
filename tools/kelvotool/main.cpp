// kelvotool: inspects, proves, mends, changes and frees films and sound tracks.

#include "tools/kelvotool/commands/Commands.h"
#include "tools/kelvotool/options/CommandLine.h"
#include "tools/kelvotool/report/StopSignal.h"

#include <exception>

int main(int argc, char** argv) {
    using namespace kelvo::tool;
    try {
        CatchStopSignals();
        CommandLine line;
        AddAllCommands(line);
        return line.Run(argc, argv);
    } catch (const std::exception& error) {
        SayError(error.what());
    } catch (...) { // the classes' way of saying that memory ran out
        SayError("there is not enough memory");
    }
    return kNotDone;
}
