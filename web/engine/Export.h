#pragma once

/// Ahead of a function that the page calls, by its own name.
#define TESSERAE_EXPORT(name) extern "C" __attribute__((export_name(#name)))
