# Our own small functions on Linux: into velmora-platform, and the text module that it loads when something is measured
# or drawn.
find_package(Fontconfig REQUIRED)
find_package(PkgConfig REQUIRED)
pkg_check_modules(PANGO REQUIRED IMPORTED_TARGET pangocairo pangoft2 cairo cairo-svg cairo-pdf cairo-png)

set(functions ${CMAKE_CURRENT_LIST_DIR})
target_sources(velmora-platform PRIVATE
  ${functions}/../Portable/FileReference.cpp
  ${functions}/../Portable/MacRoman.cpp
  ${functions}/../Portable/Report.cpp
  ${functions}/../Portable/Streams.cpp
  ${functions}/Drawing.cpp
  ${functions}/Fonts.cpp
  ${functions}/Process.cpp
  ${functions}/System.cpp)
target_include_directories(velmora-platform PRIVATE ${functions}/../Portable)
target_link_libraries(velmora-platform PRIVATE Fontconfig::Fontconfig ${CMAKE_DL_LIBS})

add_library(velmora-text MODULE ${functions}/TextModule.cpp ${functions}/Typesetter.cpp ${functions}/CairoPicture.cpp)
target_include_directories(velmora-text PRIVATE ${functions} ${functions}/../Portable ${functions}/../include)
target_link_libraries(velmora-text PRIVATE PkgConfig::PANGO Fontconfig::Fontconfig velmora_settings)
target_link_options(velmora-text PRIVATE LINKER:-z,nodelete)
add_dependencies(velmora-platform velmora-text) # found at run time, beside it
install(TARGETS velmora-text DESTINATION ${VELMORA_LIBRARY_FOLDER})
