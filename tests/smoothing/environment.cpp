#include "frame/support.h"

static auto* const kLibrary = ::testing::AddGlobalTestEnvironment(new LibraryEnvironment);
