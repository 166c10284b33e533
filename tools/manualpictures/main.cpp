// Draws the pictures of docs/manual: manual_pictures FOLDER. Everything comes from the library
// itself, so that a change of the instrument shows in its picture.
#include <exception>
#include <iostream>

#include "tools/manualpictures/Pages.h"

int main(int count, char** arguments) {
    using namespace Quorvan::Tools;
    if (count != 2) {
        std::cerr << "Usage: manual_pictures FOLDER\n";
        return 2;
    }
    try {
        DrawCover(std::string(arguments[1]) + "/cover.png");
        DrawTapePages(arguments[1]);
        DrawGrainPages(arguments[1]);
        DrawSoundPages(arguments[1]);
        DrawMovementPages(arguments[1]);
    } catch (const std::exception& problem) {
        std::cerr << "manual_pictures: " << problem.what() << "\n";
        return 1;
    }
    return 0;
}
