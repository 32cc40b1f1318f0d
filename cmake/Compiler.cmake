# One place for language level, warnings and sanitizers of everything built here.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
if(NOT WIN32)
  # The Windows library exports its classes whole, inline members included.
  set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
endif()
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

# No fused multiply-add: dead reckoning computes the same bits on every machine.
add_compile_options(-ffp-contract=off)
if(PROJECT_IS_TOP_LEVEL)
  # A game's build has its own idea of warnings, and compilers that nobody has tried here.
  add_compile_options(-Wall -Wextra -Wshadow -Wconversion)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # GCC 12 sees overlaps in the concatenation of std::string that are none.
  add_compile_options(-Wno-restrict)
  if(WIN32)
    # Nor does a small std::vector of bytes overflow when it grows.
    add_compile_options(-Wno-array-bounds -Wno-stringop-overflow)
  endif()
endif()
if(PROJECT_IS_TOP_LEVEL AND CMAKE_CXX_COMPILER_ID STREQUAL Clang)
  # Whoever touches what a lock guards holds it (KesraNTC/platform/private/Locking.h).
  add_compile_options(-Wthread-safety -Wthread-safety-beta -Werror=thread-safety)
endif()
if(KESRANTC_WARNINGS_AS_ERRORS)
  add_compile_options(-Werror)
endif()
if(KESRANTC_SANITIZE)
  add_compile_options(-fsanitize=${KESRANTC_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${KESRANTC_SANITIZE})
endif()
