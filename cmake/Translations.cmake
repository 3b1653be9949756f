# The catalogues of the texts that people read: po/<language>.po, each as a binary one in the
# product. scripts/texts brings po/ up to date with the code.
find_program(ANNIVO_MSGFMT msgfmt REQUIRED)
file(GLOB catalogues CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/po/*.po)
set(annivo_catalogues)
foreach(catalogue IN LISTS catalogues)
  get_filename_component(language ${catalogue} NAME_WE)
  set(compiled "${ANNIVO_APP}/Contents/Resources/locale/${language}/LC_MESSAGES/annivo.mo")
  get_filename_component(folder "${compiled}" DIRECTORY)
  add_custom_command(OUTPUT "${compiled}" DEPENDS ${catalogue}
    COMMAND ${CMAKE_COMMAND} -E make_directory "${folder}"
    COMMAND ${ANNIVO_MSGFMT} --check -o "${compiled}" ${catalogue} VERBATIM)
  list(APPEND annivo_catalogues "${compiled}")
endforeach()
add_custom_target(annivo_translations DEPENDS ${annivo_catalogues})
add_dependencies(annivo_product annivo_translations)
