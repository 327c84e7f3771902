# The Debian packages, made by cpack (scripts/package). What only the packages install has components
# that cmake --install leaves out.
find_program(GZIP gzip)

function(vlx_compress source target)
  add_custom_command(OUTPUT ${target} COMMAND ${GZIP} -9nc ${source} > ${target} DEPENDS ${source})
endfunction()
set(packaging ${PROJECT_SOURCE_DIR}/packaging)
vlx_compress(${packaging}/changelog ${PROJECT_BINARY_DIR}/changelog.gz)
add_custom_target(vlx_changelog ALL DEPENDS ${PROJECT_BINARY_DIR}/changelog.gz)

install(FILES ${PROJECT_BINARY_DIR}/changelog.gz ${packaging}/copyright
        DESTINATION share/doc/vlx COMPONENT packaging EXCLUDE_FROM_ALL)
install(DIRECTORY docs/ DESTINATION share/doc/vlx COMPONENT packaging EXCLUDE_FROM_ALL
        FILES_MATCHING PATTERN *.md PATTERN architecture.md EXCLUDE PATTERN pictures EXCLUDE)
install(FILES ${packaging}/system.toml DESTINATION /etc/vlx COMPONENT packaging EXCLUDE_FROM_ALL)
install(FILES ${packaging}/two-colour.toml DESTINATION /etc/vlx/presets COMPONENT packaging EXCLUDE_FROM_ALL)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vlx)
set(CPACK_PACKAGE_CONTACT "vlx maintainers <maintainers@vlx.invalid>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/compress_man.cmake)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL Unspecified packaging)
set(CPACK_COMPONENT_UNSPECIFIED_GROUP vlx)
set(CPACK_COMPONENT_PACKAGING_GROUP vlx)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_VLX_PACKAGE_NAME vlx)
set(CPACK_DEBIAN_VLX_PACKAGE_DEPENDS "poppler-utils, librsvg2-bin")
set(CPACK_DEBIAN_VLX_PACKAGE_RECOMMENDS "cups, cups-filters")
set(CPACK_DEBIAN_VLX_PACKAGE_CONTROL_EXTRA
    "${packaging}/conffiles;${packaging}/postinst;${packaging}/postrm")
set(CPACK_COMPONENT_VLX_DESCRIPTION
"driver for one- and two-colour label printers
Prints PDF pages, pictures and raster on VLX label printers: from programs
through print queues of CUPS, from a command line with vlx print. Bars of
bar codes keep their dots, pages are never scaled unseen.
.
A virtual printer shows every label before it moves paper, explains and
checks print jobs, and stands in for a printer on the network.")

if(TARGET vlx-ipp)
  install(FILES ${packaging}/vlx-ipp.service DESTINATION lib/systemd/system
          COMPONENT ipp-packaging EXCLUDE_FROM_ALL)
  install(FILES ${PROJECT_BINARY_DIR}/changelog.gz ${packaging}/copyright
          DESTINATION share/doc/vlx-ipp COMPONENT ipp-packaging EXCLUDE_FROM_ALL)
  list(APPEND CPACK_COMPONENTS_ALL ipp ipp-packaging)
  set(CPACK_COMPONENT_IPP_GROUP ipp)
  set(CPACK_COMPONENT_IPP-PACKAGING_GROUP ipp)
  set(CPACK_DEBIAN_IPP_PACKAGE_NAME vlx-ipp)
  set(CPACK_DEBIAN_IPP_PACKAGE_DEPENDS "vlx (= ${PROJECT_VERSION})")
  set(CPACK_COMPONENT_IPP_DESCRIPTION
"label printers for everything that speaks IPP
A printer application for VLX label printers: phones, driverless queues and
programs print to it without a print server on the machine. The page of a
printer shows pictures of its last labels.
.
The server listens on this machine only. It is not started by installing.")
endif()
include(CPack)
