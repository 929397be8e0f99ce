#include "hosts/cli/program.h"

int main(int argc, char** argv) {
  return scrubwell::cli::RunProgram(argc, argv);
}
