# Our own small functions on macOS.
set(functions ${CMAKE_CURRENT_LIST_DIR})
target_sources(velmora-platform PRIVATE
  ${functions}/../Portable/FileReference.cpp
  ${functions}/../Portable/MacRoman.cpp
  ${functions}/../Portable/Report.cpp
  ${functions}/../Portable/Streams.cpp
  ${functions}/Composition.cpp
  ${functions}/Drawing.cpp
  ${functions}/Fonts.cpp
  ${functions}/Process.cpp
  ${functions}/System.cpp)
target_include_directories(velmora-platform PRIVATE ${functions}/../Portable)
target_link_libraries(velmora-platform PRIVATE
  "-framework CoreFoundation" "-framework CoreGraphics" "-framework CoreText" "-framework ImageIO" "-framework SystemConfiguration")
