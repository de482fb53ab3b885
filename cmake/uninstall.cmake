# Removes the files that MANIFEST lists.
if(NOT EXISTS "${MANIFEST}")
  message(FATAL_ERROR "nothing has been installed from this build folder: ${MANIFEST} is missing")
endif()
file(STRINGS "${MANIFEST}" files)
foreach(file IN LISTS files)
  message(STATUS "Removing $ENV{DESTDIR}${file}")
  file(REMOVE "$ENV{DESTDIR}${file}")
endforeach()
