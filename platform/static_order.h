#pragma once

/// For a static object that the others of its module rely on: it is made before them, whatever file
/// they stand in, and destroyed after them.
#define QVD_STARTS_FIRST [[gnu::init_priority(101)]]
