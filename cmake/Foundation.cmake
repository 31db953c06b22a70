# objc_foundation: Foundation and Core Foundation, the platform's own on macOS and GNUstep's on Linux.
# objc_appkit: AppKit over it; VELMORA_APPKIT says whether there is one.
foreach(language OBJC OBJCXX)
  if(NOT CMAKE_${language}_COMPILER) # else CMake picks clang whatever the C++ compiler is
    if(language STREQUAL "OBJC")
      set(CMAKE_OBJC_COMPILER "${CMAKE_C_COMPILER}" CACHE FILEPATH "Objective-C compiler")
    else()
      set(CMAKE_OBJCXX_COMPILER "${CMAKE_CXX_COMPILER}" CACHE FILEPATH "Objective-C++ compiler")
    endif()
  endif()
  enable_language(${language})
endforeach()

add_library(objc_foundation INTERFACE)
if(APPLE)
  target_link_libraries(objc_foundation INTERFACE "-framework Foundation" "-framework CoreServices")
else()
  find_path(GNUSTEP_INCLUDE Foundation/Foundation.h PATH_SUFFIXES GNUstep REQUIRED)
  find_library(GNUSTEP_BASE gnustep-base REQUIRED)
  foreach(item include libobjc.so)
    execute_process(COMMAND gcc -print-file-name=${item} OUTPUT_VARIABLE gcc_${item} OUTPUT_STRIP_TRAILING_WHITESPACE)
  endforeach()
  set(objc_languages $<COMPILE_LANGUAGE:OBJC,OBJCXX>)
  target_include_directories(objc_foundation SYSTEM INTERFACE ${GNUSTEP_INCLUDE})
  target_compile_definitions(objc_foundation INTERFACE
    $<${objc_languages}:GNUSTEP GNUSTEP_BASE_LIBRARY=1 GNU_RUNTIME=1 _NATIVE_OBJC_EXCEPTIONS>)
  target_compile_options(objc_foundation INTERFACE $<${objc_languages}:-fexceptions -fobjc-exceptions
    -fno-strict-aliasing -fconstant-string-class=NSConstantString>)
  if(CMAKE_OBJCXX_COMPILER_ID STREQUAL "Clang")
    target_compile_options(objc_foundation INTERFACE
      "$<${objc_languages}:-fobjc-runtime=gcc>"
      "$<${objc_languages}:SHELL:-idirafter ${gcc_include}>") # objc/objc.h, after clang's own headers
  endif()
  target_link_libraries(objc_foundation INTERFACE ${GNUSTEP_BASE} ${gcc_libobjc.so})
endif()

set(VELMORA_APPKIT ON)
add_library(objc_appkit INTERFACE)
target_link_libraries(objc_appkit INTERFACE objc_foundation)
if(APPLE)
  target_link_libraries(objc_appkit INTERFACE "-framework AppKit")
else()
  find_path(GNUSTEP_GUI_INCLUDE AppKit/AppKit.h PATH_SUFFIXES GNUstep)
  find_library(GNUSTEP_GUI gnustep-gui)
  if(GNUSTEP_GUI_INCLUDE AND GNUSTEP_GUI)
    target_include_directories(objc_appkit SYSTEM INTERFACE ${GNUSTEP_GUI_INCLUDE})
    target_compile_definitions(objc_appkit INTERFACE $<$<COMPILE_LANGUAGE:OBJCXX>:GNUSTEP_GUI_LIBRARY=1>)
    target_link_libraries(objc_appkit INTERFACE ${GNUSTEP_GUI})
  else()
    set(VELMORA_APPKIT OFF)
    message(STATUS "No AppKit here (Debian: libgnustep-gui-dev): the Cocoa drawing is not built")
  endif()
endif()
