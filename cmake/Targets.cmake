# The code, one static library a room, so that the linker knows which room may use which library.

function(annivo_module target folder)
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/${folder}/*.cpp)
  list(FILTER sources EXCLUDE REGEX "/(main|ZPKLimitSystem)\\.cpp$")
  if(sources)
    add_library(${target} STATIC ${sources})
    target_link_libraries(${target} PRIVATE annivo_options PUBLIC ${ARGN})
  else()
    add_library(${target} INTERFACE)
    target_link_libraries(${target} INTERFACE ${ARGN})
  endif()
  target_include_directories(${target} INTERFACE ${CMAKE_SOURCE_DIR})
endfunction()

# target_link_libraries for a library whose headers only the module itself may include.
function(annivo_uses target)
  get_target_property(type ${target} TYPE)
  if(NOT type STREQUAL "INTERFACE_LIBRARY")
    target_link_libraries(${target} PRIVATE ${ARGN})
  endif()
endfunction()

annivo_module(annivo_base base)
annivo_uses(annivo_base annivo_cctz annivo_utf8proc)

annivo_module(annivo_plist_codec codecs/plist annivo_base)
annivo_uses(annivo_plist_codec annivo_plist)
annivo_module(annivo_icalendar codecs/icalendar annivo_base)
annivo_module(annivo_vcard codecs/vcard annivo_base)
annivo_module(annivo_xml codecs/xml annivo_base)

annivo_module(annivo_foundation platform/foundation annivo_plist_codec annivo_base)
annivo_module(annivo_appkit platform/appkit annivo_foundation)
annivo_module(annivo_coredata platform/coredata annivo_foundation annivo_xml)
annivo_uses(annivo_coredata annivo_sqlite annivo_pugixml)
annivo_module(annivo_addressbook platform/addressbook annivo_coredata annivo_foundation)
annivo_module(annivo_calendarstore platform/calendarstore annivo_foundation annivo_icalendar)
if(ANNIVO_SANITIZE)
  # What reads whole ledgers and event files keeps its time limits under the sanitizers too.
  foreach(module annivo_coredata annivo_calendarstore annivo_icalendar annivo_xml)
    target_compile_options(${module} PRIVATE -O1)
  endforeach()
endif()
annivo_module(annivo_sparkle platform/sparkle annivo_foundation ${CMAKE_DL_LIBS})
annivo_module(annivo_platform platform annivo_appkit annivo_addressbook annivo_calendarstore
  annivo_sparkle annivo_coredata annivo_foundation)

# The domain. It sees platform headers and nothing of what stands behind them. ZPKLimitSystem is
# the leaf of run/ that contacts/ looks back to.
add_library(annivo_limits STATIC ${CMAKE_SOURCE_DIR}/run/ZPKLimitSystem.cpp)
target_link_libraries(annivo_limits PRIVATE annivo_options PUBLIC annivo_platform)
annivo_module(annivo_contacts contacts annivo_limits annivo_platform)
annivo_module(annivo_calendar calendar annivo_platform)
annivo_module(annivo_format format annivo_calendar annivo_platform)
annivo_module(annivo_run run annivo_contacts annivo_calendar annivo_format annivo_platform)

# The parent application, but for its main.
annivo_module(annivo_settings parent/settings annivo_run annivo_platform)
annivo_module(annivo_sources parent/sources annivo_settings annivo_vcard)
annivo_module(annivo_runs parent/runs annivo_sources)
annivo_module(annivo_command parent/command annivo_runs)
find_path(ANNIVO_CLI11_INCLUDE CLI/CLI.hpp REQUIRED)
target_include_directories(annivo_command SYSTEM PRIVATE ${ANNIVO_CLI11_INCLUDE})
