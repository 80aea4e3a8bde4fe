// The preview command of the tovik command line.
#ifndef TOVIK_CLI_PREVIEW_COMMAND_H_
#define TOVIK_CLI_PREVIEW_COMMAND_H_

namespace tovik::cli {

// tovik preview FILE.dxf -o OUT.png|OUT.svg [--size WxH] [--layout NAME]
// [--window X1,Y1,X2,Y2] [--background black|white]; argv holds what
// follows "preview". Returns the process status.
int Preview(int argc, char** argv);

}  // namespace tovik::cli

#endif  // TOVIK_CLI_PREVIEW_COMMAND_H_
