#pragma once

namespace Agent {

// Runs the application: prepares its folders, delivers the files named on the command line, launches, serves
// until it is terminated. Returns the process's exit status.
int ApplicationMain(int argc, char** argv);

}  // namespace Agent
