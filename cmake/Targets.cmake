# The code, one static library a folder, so that the linker knows which folder may use which
# library: only those under platform/ get third-party headers.

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

annivo_module(annivo_foundation platform/foundation)
annivo_uses(annivo_foundation annivo_plist annivo_cctz annivo_utf8proc)
annivo_module(annivo_appkit platform/appkit annivo_foundation)
annivo_module(annivo_coredata platform/coredata annivo_foundation)
annivo_uses(annivo_coredata annivo_sqlite annivo_pugixml)
annivo_module(annivo_addressbook platform/addressbook annivo_coredata annivo_foundation)
annivo_module(annivo_calendarstore platform/calendarstore annivo_foundation)
if(ANNIVO_SANITIZE)
  # What reads whole ledgers and event files keeps its time limits under the sanitizers too.
  target_compile_options(annivo_coredata PRIVATE -O1)
  target_compile_options(annivo_calendarstore PRIVATE -O1)
endif()
annivo_module(annivo_sparkle platform/sparkle annivo_foundation ${CMAKE_DL_LIBS})
annivo_module(annivo_platform platform annivo_appkit annivo_addressbook annivo_calendarstore
  annivo_sparkle annivo_coredata annivo_foundation)

# The domain. It sees platform headers and nothing of what stands behind them. LoggingSwitch and
# ZPKLimitSystem are the leaves of run/ that contacts/ and calendar/ look back to.
add_library(annivo_limits STATIC ${CMAKE_SOURCE_DIR}/run/ZPKLimitSystem.cpp)
target_link_libraries(annivo_limits PRIVATE annivo_options PUBLIC annivo_platform)
annivo_module(annivo_contacts contacts annivo_limits annivo_platform)
annivo_module(annivo_calendar calendar annivo_platform)
annivo_module(annivo_format format annivo_calendar annivo_platform)
annivo_module(annivo_run run annivo_contacts annivo_calendar annivo_format annivo_platform)
