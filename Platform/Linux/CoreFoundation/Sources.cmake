# The Core Foundation subset over GNUstep's Foundation.
set(core_foundation ${CMAKE_CURRENT_LIST_DIR})
target_sources(velmora-platform PRIVATE
  ${core_foundation}/Alert.cpp
  ${core_foundation}/Base.mm
  ${core_foundation}/Bundle.mm
  ${core_foundation}/Collections.mm
  ${core_foundation}/CoreServices.mm
  ${core_foundation}/LookUps.mm
  ${core_foundation}/PlugIn.mm
  ${core_foundation}/Preferences.mm
  ${core_foundation}/PropertyList.mm
  ${core_foundation}/String.mm
  ${core_foundation}/TextEncoding.cpp
  ${core_foundation}/Url.mm
  ${core_foundation}/Uuid.mm)
find_package(pugixml 1.11 REQUIRED GLOBAL)
target_link_libraries(velmora-platform PRIVATE pugixml::pugixml)
# A program that is no bundle counts as this one.
set_source_files_properties(${core_foundation}/Bundle.mm TARGET_DIRECTORY velmora-platform PROPERTIES
  COMPILE_DEFINITIONS "VELMORA_VERSION=\"${PROJECT_VERSION}\"")
