# The product folder, "Annivo 2.app": complete and relocatable in the build folder.
set(ANNIVO_APP "${CMAKE_BINARY_DIR}/Annivo 2.app")
set(ANNIVO_AGENT_APP "${ANNIVO_APP}/Contents/Helpers/AnnivoAgent.app")

add_executable(annivo_agent ${CMAKE_SOURCE_DIR}/run/main.cpp)
target_link_libraries(annivo_agent PRIVATE annivo_options annivo_run annivo_platform)
target_compile_definitions(annivo_agent PRIVATE ANNIVO_VERSION="${PROJECT_VERSION}")
set_target_properties(annivo_agent PROPERTIES OUTPUT_NAME AnnivoAgent
  RUNTIME_OUTPUT_DIRECTORY "${ANNIVO_AGENT_APP}/Contents/Linux")
# Most of what a run without work costs is the loading of shared libraries.
target_link_options(annivo_agent PRIVATE -Wl,--as-needed)

# Resources: every file under resources/<from> at <to>, copied when it changes; <name>.in as <name>,
# with the version in it.
set(annivo_resources)
function(annivo_copy_resources from to)
  file(GLOB_RECURSE files CONFIGURE_DEPENDS RELATIVE ${CMAKE_SOURCE_DIR}/resources/${from}
    ${CMAKE_SOURCE_DIR}/resources/${from}/*)
  foreach(file IN LISTS files)
    if(file MATCHES "(.*)\\.in$")
      configure_file("${CMAKE_SOURCE_DIR}/resources/${from}/${file}" "${to}/${CMAKE_MATCH_1}" @ONLY)
      continue()
    endif()
    add_custom_command(OUTPUT "${to}/${file}"
      COMMAND ${CMAKE_COMMAND} -E copy "${CMAKE_SOURCE_DIR}/resources/${from}/${file}" "${to}/${file}"
      DEPENDS "${CMAKE_SOURCE_DIR}/resources/${from}/${file}" VERBATIM)
    list(APPEND annivo_resources "${to}/${file}")
  endforeach()
  set(annivo_resources ${annivo_resources} PARENT_SCOPE)
endfunction()
annivo_copy_resources(parent "${ANNIVO_APP}/Contents")
annivo_copy_resources(agent "${ANNIVO_AGENT_APP}/Contents")
annivo_copy_resources(system "${ANNIVO_APP}/Contents/SharedSupport/System")
add_custom_target(annivo_resource_files DEPENDS ${annivo_resources})

add_custom_target(annivo_product ALL DEPENDS annivo_agent annivo_resource_files)

add_subdirectory(frameworks/Sparkle)
annivo_sparkle_framework("${ANNIVO_APP}/Contents/Frameworks/Sparkle.framework")
add_dependencies(annivo_product annivo_sparkle_framework)

add_executable(annivo-cli ${CMAKE_SOURCE_DIR}/parent/command/main.cpp)
target_link_libraries(annivo-cli PRIVATE annivo_options annivo_command)
set_target_properties(annivo-cli PROPERTIES OUTPUT_NAME annivo
  RUNTIME_OUTPUT_DIRECTORY "${ANNIVO_APP}/Contents/Linux")
# The parent application is the same program under another name.
add_custom_command(OUTPUT "${ANNIVO_APP}/Contents/Linux/Annivo 2" DEPENDS annivo-cli
  COMMAND ${CMAKE_COMMAND} -E create_symlink annivo "${ANNIVO_APP}/Contents/Linux/Annivo 2" VERBATIM)
add_custom_target(annivo_parent_link DEPENDS "${ANNIVO_APP}/Contents/Linux/Annivo 2")
add_dependencies(annivo_product annivo_parent_link)

include(GNUInstallDirs)
install(DIRECTORY "${ANNIVO_APP}" DESTINATION lib/annivo USE_SOURCE_PERMISSIONS)
install(CODE "
  file(MAKE_DIRECTORY \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/bin\")
  file(CREATE_LINK \"../lib/annivo/Annivo 2.app/Contents/Linux/annivo\"
    \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/bin/annivo\" SYMBOLIC)")
install(FILES ${CMAKE_SOURCE_DIR}/docs/man/annivo.1 ${CMAKE_SOURCE_DIR}/docs/man/AnnivoAgent.1
  DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)

# The shells' completions, as the command itself prints them.
set(ANNIVO_COMPLETIONS bash:bash-completion/completions/annivo zsh:zsh/site-functions/_annivo
  fish:fish/vendor_completions.d/annivo.fish)
foreach(completion IN LISTS ANNIVO_COMPLETIONS)
  string(REPLACE ":" ";" completion ${completion})
  list(GET completion 0 shell)
  list(GET completion 1 file)
  install(CODE "
    set(file \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_DATADIR}/${file}\")
    get_filename_component(folder \"\${file}\" DIRECTORY)
    file(MAKE_DIRECTORY \"\${folder}\")
    execute_process(COMMAND \"${CMAKE_COMMAND}\" -E env \"HOME=${CMAKE_BINARY_DIR}\" \"$<TARGET_FILE:annivo-cli>\" completions ${shell}
      OUTPUT_FILE \"\${file}\" COMMAND_ERROR_IS_FATAL ANY)")
endforeach()
