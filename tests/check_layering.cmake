# Includes point one way: velmaro -> quorvel -> quorvel/platform, and the
# support library's shared folders never reach into the Help Center, so that
# the requests side can be built without it. Run with -DSOURCE_DIR=<project>.

# folder (relative to SOURCE_DIR) | include prefix it must not use
set(RULES
  "quorvel/platform|quorvel/[a-z_]+\\.h"
  "quorvel|velmaro/"
  "velmaro/core|velmaro/helpcenter/"
  "velmaro/util|velmaro/helpcenter/"
  "velmaro/settings|velmaro/helpcenter/"
  "velmaro/blips|velmaro/helpcenter/"
  "velmaro/requests|velmaro/helpcenter/"
  "velmaro/storage|velmaro/helpcenter/"
  "velmaro/ticketforms|velmaro/helpcenter/"
  "velmaro/attachments|velmaro/helpcenter/"
  "velmaro/outbox|velmaro/helpcenter/")

set(violations "")
foreach(rule IN LISTS RULES)
  string(REPLACE "|" ";" parts "${rule}")
  list(GET parts 0 folder)
  list(GET parts 1 forbidden)
  if(NOT IS_DIRECTORY "${SOURCE_DIR}/${folder}")
    continue()
  endif()
  file(GLOB_RECURSE files "${SOURCE_DIR}/${folder}/*.h" "${SOURCE_DIR}/${folder}/*.cc")
  foreach(file IN LISTS files)
    # quorvel/'s rule covers only its own files, not the platform below it.
    if(folder STREQUAL "quorvel" AND file MATCHES "/quorvel/platform/")
      continue()
    endif()
    file(STRINGS "${file}" lines REGEX "^#include \"${forbidden}")
    foreach(line IN LISTS lines)
      file(RELATIVE_PATH shown "${SOURCE_DIR}" "${file}")
      string(APPEND violations "  ${shown}: ${line}\n")
    endforeach()
  endforeach()
endforeach()

if(violations)
  message(FATAL_ERROR "Includes that point the wrong way:\n${violations}")
endif()
