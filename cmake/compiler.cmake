# What every target of ours is compiled with.
add_library(norvane_settings INTERFACE)
target_compile_definitions(norvane_settings INTERFACE UNICODE _UNICODE NOMINMAX)
target_compile_options(
  norvane_settings
  INTERFACE -Wall -Wextra -Werror -ffunction-sections -fdata-sections
            "$<$<COMPILE_LANGUAGE:CXX>:SHELL:-include ${CMAKE_CURRENT_LIST_DIR}/no_wide_functions.h>")
target_link_options(norvane_settings INTERFACE -Wl,--gc-sections)

# Speed is in the calls and not in the code, and the program has to stay small.
set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG")
set(CMAKE_C_FLAGS_RELEASE "-O2 -DNDEBUG")
set(CMAKE_CXX_FLAGS_DEBUG "-O1 -g1")
set(CMAKE_C_FLAGS_DEBUG "-O1 -g1")

if(WIN32)
  # Windows 7 is the oldest system of the console program.
  target_compile_definitions(norvane_settings INTERFACE _WIN32_WINNT=0x0601 WINVER=0x0601)
  target_compile_options(norvane_settings INTERFACE $<$<NOT:$<COMPILE_LANGUAGE:RC>>:-municode>)
  target_link_options(norvane_settings INTERFACE -static -municode $<$<CONFIG:Release>:-s>)
  target_link_libraries(norvane_settings INTERFACE netapi32 userenv wtsapi32 shlwapi shell32 ole32
                        rpcrt4 advapi32 user32 psapi uuid)
  if(NORVANE_SANITIZE)
    # Traps only: mingw-w64 has no runtime of the sanitizers.
    target_compile_options(norvane_settings INTERFACE -fsanitize=undefined
                           -fsanitize-undefined-trap-on-error)
    target_compile_definitions(norvane_settings INTERFACE _GLIBCXX_ASSERTIONS)
  endif()
else()
  # L"" is UTF-16 and WCHAR is wchar_t, as on Windows.
  target_compile_options(norvane_settings INTERFACE -fshort-wchar)
  target_compile_definitions(norvane_settings INTERFACE WINE_UNICODE_NATIVE)
  target_include_directories(norvane_settings SYSTEM INTERFACE /usr/include/wine/wine/windows)
  target_link_options(norvane_settings INTERFACE $<$<CONFIG:Release>:-s>)
  target_link_libraries(norvane_settings INTERFACE pthread)
  if(CMAKE_CXX_COMPILER_ID STREQUAL Clang)
    # The SDK's calling convention, where it is a part of a template's argument.
    target_compile_options(norvane_settings INTERFACE -Wno-ignored-attributes)
  endif()
  if(NORVANE_FUZZ)
    target_compile_options(norvane_settings INTERFACE -fsanitize=fuzzer-no-link)
  endif()
  if(NORVANE_SANITIZE)
    target_compile_options(norvane_settings INTERFACE -fsanitize=address,undefined
                           -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
    target_compile_definitions(norvane_settings INTERFACE _GLIBCXX_ASSERTIONS)
    target_link_options(norvane_settings INTERFACE -fsanitize=address,undefined)
  endif()
endif()
