# Where `cmake --install` puts the program. It looks for its files beside itself, so it lies with
# them in a folder of its own, and the search path gets a link.

set(KVN_ID org.kestrelvane.kestrelvane)
set(KVN_PROGRAM_DIR ${CMAKE_INSTALL_LIBDIR}/kestrelvane)
set(desktop ${CMAKE_SOURCE_DIR}/resources/desktop)
set(app ${CMAKE_SOURCE_DIR}/resources/app)

install(TARGETS kestrelvane RUNTIME DESTINATION ${KVN_PROGRAM_DIR})
install(FILES ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/Splash.spl DESTINATION ${KVN_PROGRAM_DIR})
install(FILES ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/kvn.chm DESTINATION ${KVN_PROGRAM_DIR} OPTIONAL)
install(DIRECTORY ${CMAKE_SOURCE_DIR}/docs/manual DESTINATION ${KVN_PROGRAM_DIR})
install(DIRECTORY DESTINATION ${KVN_PROGRAM_DIR}/AlphaMasks)
file(RELATIVE_PATH link_target ${CMAKE_INSTALL_FULL_BINDIR}
     ${CMAKE_INSTALL_PREFIX}/${KVN_PROGRAM_DIR}/kestrelvane)
install(CODE "
    set(bin \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}\")
    file(MAKE_DIRECTORY \"\${bin}\")
    file(CREATE_LINK ${link_target} \"\${bin}/kestrelvane\" SYMBOLIC)")

install(FILES ${desktop}/${KVN_ID}.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${desktop}/${KVN_ID}.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(FILES ${desktop}/kestrelvane.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
configure_file(${desktop}/${KVN_ID}.service.in ${CMAKE_BINARY_DIR}/${KVN_ID}.service @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/${KVN_ID}.service
        DESTINATION ${CMAKE_INSTALL_DATADIR}/dbus-1/services)

set(icons ${CMAKE_INSTALL_DATADIR}/icons/hicolor)
foreach(size 16 22 24 32 48 64 128 256)
    install(FILES ${app}/kestrelvane-${size}.png
            DESTINATION ${icons}/${size}x${size}/apps RENAME ${KVN_ID}.png)
endforeach()
install(FILES ${app}/kestrelvane.svg DESTINATION ${icons}/scalable/apps RENAME ${KVN_ID}.svg)

install(FILES ${CMAKE_SOURCE_DIR}/README.md ${CMAKE_SOURCE_DIR}/LICENSE
        DESTINATION ${CMAKE_INSTALL_DOCDIR} OPTIONAL)

# A run from the build tree finds the same folders beside the program.
file(CREATE_LINK ${CMAKE_SOURCE_DIR}/docs/manual ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/manual SYMBOLIC)
file(MAKE_DIRECTORY ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/AlphaMasks)
