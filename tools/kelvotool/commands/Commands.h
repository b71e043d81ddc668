#pragma once
// What kelvotool can do: one file a command. Each adds itself to the command line with its options,
// prints its result on standard output and says what is wrong on standard error.

namespace kelvo::tool {

class CommandLine;

/// Headers, sizes and the state of the index, as far as they can be made out.
void AddInfo(CommandLine& line);
/// Reads everything, in order and by number, and compares the index with the records.
void AddVerify(CommandLine& line);
/// Every record of a track, decoded in order: its hash, or its bytes.
void AddFrames(CommandLine& line);
/// Makes the index anew from the records.
void AddRebuild(CommandLine& line);
/// The same film or track in another type.
void AddConvert(CommandLine& line);
/// Two tracks to one film and back, byte for byte.
void AddMux(CommandLine& line);
void AddDemux(CommandLine& line);
/// The numbers that tie each image to the sound.
void AddLink(CommandLine& line);
/// A film as other programs open it.
void AddExport(CommandLine& line);
/// A film of what other programs wrote.
void AddImport(CommandLine& line);
/// Pictures that tell what a film is.
void AddThumbnail(CommandLine& line);
void AddSheet(CommandLine& line);
/// Parts of a film, and films behind each other.
void AddCut(CommandLine& line);
void AddJoin(CommandLine& line);
/// The compression types.
void AddTypes(CommandLine& line);
/// A script for a shell that completes command lines.
void AddCompletion(CommandLine& line);
/// The overview, or the page of a command.
void AddHelp(CommandLine& line);

/// All of them, in the order in which help lists them.
void AddAllCommands(CommandLine& line);

} // namespace kelvo::tool
