#include "tools/kelvotool/commands/Commands.h"

namespace kelvo::tool {

void AddAllCommands(CommandLine& line) {
    AddInfo(line);
    AddVerify(line);
    AddFrames(line);
    AddRebuild(line);
    AddConvert(line);
    AddMux(line);
    AddDemux(line);
    AddLink(line);
    AddExport(line);
    AddImport(line);
    AddThumbnail(line);
    AddSheet(line);
    AddCut(line);
    AddJoin(line);
    AddTypes(line);
    AddCompletion(line);
    AddHelp(line);
}

} // namespace kelvo::tool
