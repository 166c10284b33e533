#pragma once

#include <string>

/// The pictures of docs/manual, a function for each page. folder ends without a slash.
namespace Quorvan::Tools {

void DrawCover(const std::string& file);
void DrawTapePages(const std::string& folder);
void DrawGrainPages(const std::string& folder);
void DrawSoundPages(const std::string& folder);
void DrawMovementPages(const std::string& folder);

}  // namespace Quorvan::Tools
