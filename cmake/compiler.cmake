# What every target of ours is compiled with, and what the program is in addition. (The tests are not: it is
# the program that is watched for undefined behaviour, and in them that would double the compiler's time.)
add_library(norvane_settings INTERFACE)
add_library(norvane_checks INTERFACE)
target_compile_definitions(norvane_settings INTERFACE UNICODE _UNICODE NOMINMAX)
target_compile_options(norvane_settings INTERFACE -Wall -Wextra -Werror -ffunction-sections
                                                  -fdata-sections)
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
    target_compile_options(norvane_checks INTERFACE -fsanitize=undefined
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
    target_compile_options(norvane_settings INTERFACE -fsanitize=address -fno-omit-frame-pointer)
    target_compile_options(norvane_checks INTERFACE -fsanitize=undefined -fno-sanitize-recover=undefined)
    target_compile_definitions(norvane_settings INTERFACE _GLIBCXX_ASSERTIONS)
    target_link_options(norvane_settings INTERFACE -fsanitize=address,undefined)
  endif()
endif()

# The headers that most sources include take longer to compile than the sources do.
option(NORVANE_PRECOMPILE "Compile the common headers once" ON)
set(common_headers ${CMAKE_CURRENT_LIST_DIR}/common_headers.h)
set(no_wide_functions ${CMAKE_CURRENT_LIST_DIR}/no_wide_functions.h)
if(NORVANE_PRECOMPILE AND NOT WIN32)
  # With optimization GCC 12 takes the moves of std::string for overruns. Elsewhere it keeps that to itself,
  # as it does of all system headers; of precompiled ones it has forgotten that they are that.
  foreach(check array-bounds restrict stringop-overflow stringop-overread)
    target_compile_options(norvane_settings INTERFACE $<$<CONFIG:Release>:-Wno-${check}>)
  endforeach()
endif()

# take_common_headers(TARGET [FROM other | OWN headers]): for each target of ours. FROM names a target that is
# compiled with the same options and has them already; OWN are compiled along with them.
function(take_common_headers target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "FROM" "OWN")
  if(NOT NORVANE_PRECOMPILE)
    target_compile_options(${target} PRIVATE "$<$<COMPILE_LANGUAGE:CXX>:SHELL:-include ${no_wide_functions}>")
  elseif(arg_FROM)
    target_precompile_headers(${target} REUSE_FROM ${arg_FROM})
  else()
    target_precompile_headers(${target} PRIVATE ${common_headers} ${arg_OWN})
  endif()
endfunction()

# skip_common_headers(SOURCE...): sources that can't bear them.
function(skip_common_headers)
  if(NORVANE_PRECOMPILE)
    set_source_files_properties(${ARGV} PROPERTIES SKIP_PRECOMPILE_HEADERS ON
                                                   COMPILE_OPTIONS "-include;${no_wide_functions}")
  endif()
endfunction()
