# Copies SOURCE to DESTINATION only when DESTINATION does not exist: a user's own table is never
# replaced. Run as: cmake -DSOURCE=... -DDESTINATION=... -P stage_if_missing.cmake
if(NOT EXISTS "${DESTINATION}")
  get_filename_component(folder "${DESTINATION}" DIRECTORY)
  file(MAKE_DIRECTORY "${folder}")
  file(COPY_FILE "${SOURCE}" "${DESTINATION}")
  message(STATUS "Installing: ${DESTINATION}")
endif()
