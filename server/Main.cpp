#include "server/Program.h"

int main(int argc, char** argv)
{
    return Kesra::RunServerProgram(argc, argv);
}
