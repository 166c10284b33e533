#include "tools/Program.h"

int main(int count, char** arguments) { return Quorvan::Tools::RunProgram(count, arguments); }
