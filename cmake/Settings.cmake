# What every target of ours is compiled with: velmora_settings, and the function that fills the archives' source lists.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_OBJCXX_VISIBILITY_PRESET hidden)
set(CMAKE_OBJC_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

find_program(VELMORA_CCACHE ccache)
if(VELMORA_CCACHE)
  foreach(language C CXX OBJC OBJCXX)
    set(CMAKE_${language}_COMPILER_LAUNCHER ${VELMORA_CCACHE})
  endforeach()
endif()

find_package(Boost 1.74 REQUIRED)

add_library(velmora_settings INTERFACE)
target_include_directories(velmora_settings INTERFACE ${CMAKE_SOURCE_DIR}/Bounds) # the one header that all share
target_compile_options(velmora_settings INTERFACE
  -Wall -Wextra -Wshadow -Wconversion
  $<$<COMPILE_LANGUAGE:CXX,OBJCXX>:-Wnon-virtual-dtor -Woverloaded-virtual>
  $<$<COMPILE_LANGUAGE:CXX>:-Wpedantic>
  $<$<COMPILE_LANGUAGE:OBJCXX>:-std=c++20> # CMake 3.25 adds no standard for Objective-C++ with g++
  -ffp-contract=off) # the same numbers on every processor
if(VELMORA_WERROR)
  target_compile_options(velmora_settings INTERFACE -Werror)
endif()
if(VELMORA_SANITIZE)
  add_compile_options(-fsanitize=${VELMORA_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${VELMORA_SANITIZE})
endif()

# velmora_sources(FILE...): adds files of the current folder to the archive that the folder's tree makes up, VELMORA_ARCHIVE.
function(velmora_sources)
  list(TRANSFORM ARGV PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
  target_sources(${VELMORA_ARCHIVE} PRIVATE ${ARGV})
endfunction()
