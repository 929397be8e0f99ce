#include "hosts/cli/environment.h"
#include "hosts/cli/program.h"

int main(int argc, char** argv) {
  return scrubwell::hosts::RunProgram(scrubwell::hosts::ProgramArguments(argc, argv));
}
