#ifndef QUORVANE_VERSION_H
#define QUORVANE_VERSION_H

/// \file
/// The version. Every other place that shows it takes it from here.
///
/// Major version 0 promises this: a change of the last number keeps every program compiling and every picture
/// the same. A change of the middle number may change names, options and pictures; CHANGELOG.md then says
/// what to do. The names, fields, defaults and log messages of `ESRenderer`, `LibParam`, `guided_filter.h`
/// and `renderUtility.h` are settled and stay as they are through all of 0.x.

#define QUORVANE_VERSION_MAJOR 0
#define QUORVANE_VERSION_MINOR 1
#define QUORVANE_VERSION_PATCH 0

/// The same as text.
#define QUORVANE_VERSION "0.1.0"

#endif
