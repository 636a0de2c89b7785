# Completes the tree of a Debian package: licence and changes under share/doc, manual pages
# compressed, no debugging symbols.
cmake_policy(VERSION 3.21)
if(NOT CPACK_GENERATOR STREQUAL DEB)
    return()
endif()
set(tree ${CPACK_TEMPORARY_INSTALL_DIRECTORY}${CPACK_PACKAGING_INSTALL_PREFIX})
set(doc ${tree}/share/doc/tavolin)

function(compress)
    execute_process(COMMAND gzip -9nf ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

file(READ ${CPACK_TAVOLIN_SOURCE}/LICENSE licence)
string(REGEX MATCH "Copyright[^\n]*" holder "${licence}")
string(REGEX REPLACE ".*Copyright[^\n]*\n\n" "" terms "${licence}")
string(REGEX REPLACE "\n\n" "\n.\n" terms "${terms}")
string(STRIP "${terms}" terms)
string(REGEX REPLACE "\n" "\n " terms "${terms}")
string(REGEX REPLACE "^Copyright *(\\(c\\))? *" "" holder "${holder}")
file(WRITE ${doc}/copyright
"Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/
Upstream-Name: tavolin

Files: *
Copyright: ${holder}
License: Expat
 ${terms}
")

file(COPY_FILE ${CPACK_TAVOLIN_SOURCE}/CHANGELOG.md ${doc}/changelog)
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(WRITE ${doc}/changelog.Debian
"tavolin (${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}) unstable; urgency=medium

  * See changelog.gz.

 -- ${CPACK_PACKAGE_CONTACT}  ${date}
")
compress(${doc}/changelog ${doc}/changelog.Debian)
file(GLOB manual_pages ${tree}/share/man/man*/*.[1-9])
if(manual_pages)
    compress(${manual_pages})
endif()

file(GLOB_RECURSE archives ${tree}/lib/*.a)
foreach(archive ${archives})
    execute_process(COMMAND ${CPACK_TAVOLIN_STRIP} --strip-debug --enable-deterministic-archives
                            ${archive} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
