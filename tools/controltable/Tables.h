#pragma once

#include <string>

namespace Quorvan {

// Tables of the documents, in Markdown.

/// What hosts can move, as a new plug-in has it.
std::string ControlTable();
/// Every control of the window: what it does, and from where to where it goes.
std::string HelpOnControls();
/// Everything else on the window.
std::string HelpOnTheWindow();

}  // namespace Quorvan
