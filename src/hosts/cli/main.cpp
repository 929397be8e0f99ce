#include "hosts/cli/program.h"

int main(int argc, char** argv) {
  return scrubwell::hosts::RunProgram(argc, argv);
}
