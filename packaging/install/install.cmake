# Where "cmake --install" and the Debian packages put things, in the GNU folders. A program reads what it needs beside
# itself, so both stand in lib/kolmera with their texts, the guide and the demo company, and bin/ holds links to them.
include(GNUInstallDirs)
set(home lib/kolmera)
set(install_folder ${CMAKE_CURRENT_LIST_DIR})

# install_link(NAME TARGET FOLDER COMPONENT)
function(install_link name target folder component)
  file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/links/${folder})
  file(CREATE_LINK ${target} ${CMAKE_BINARY_DIR}/links/${folder}/${name} SYMBOLIC)
  install(FILES ${CMAKE_BINARY_DIR}/links/${folder}/${name} DESTINATION ${folder} COMPONENT ${component})
endfunction()

install(TARGETS kolmera-cli DESTINATION ${home} COMPONENT cli)
install(TARGETS kolmera-access-reader DESTINATION ${home} COMPONENT cli)
install(TARGETS svenska DESTINATION ${home} COMPONENT cli)
install(FILES ${CMAKE_BINARY_DIR}/bin/DVLang.sys DESTINATION ${home} COMPONENT cli)
install(DIRECTORY ${CMAKE_BINARY_DIR}/bin/demo DESTINATION ${home} COMPONENT cli)
install_link(kolmera-cli ../${home}/kolmera-cli ${CMAKE_INSTALL_BINDIR} cli)
install(FILES ${install_folder}/kolmera-cli.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
        RENAME kolmera-cli COMPONENT cli)
install(FILES ${install_folder}/_kolmera-cli DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions COMPONENT cli)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs/examples DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/kolmera-cli
        USE_SOURCE_PERMISSIONS COMPONENT cli)

if(KOLMERA_WINDOW)
  install(TARGETS kolmera DESTINATION ${home} COMPONENT window)
  install_link(kolmera ../${home}/kolmera ${CMAKE_INSTALL_BINDIR} window)
  install(FILES ${install_folder}/kolmera.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications COMPONENT window)
  configure_file(${install_folder}/kolmera.metainfo.xml kolmera.metainfo.xml @ONLY)
  install(FILES ${CMAKE_BINARY_DIR}/kolmera.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo COMPONENT window)
  set(icons ${CMAKE_INSTALL_DATADIR}/icons/hicolor)
  install(FILES ${install_folder}/kolmera.svg DESTINATION ${icons}/scalable/apps COMPONENT window)
  find_program(RSVG_CONVERT rsvg-convert)
  if(RSVG_CONVERT)
    foreach(size 16 22 24 32 48 64 128 256)
      set(icon ${CMAKE_BINARY_DIR}/icons/${size}/kolmera.png)
      file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/icons/${size})
      add_custom_command(OUTPUT ${icon}
                         COMMAND ${RSVG_CONVERT} -w ${size} ${install_folder}/kolmera.svg -o ${icon}
                         DEPENDS ${install_folder}/kolmera.svg)
      list(APPEND icon_files ${icon})
      install(FILES ${icon} DESTINATION ${icons}/${size}x${size}/apps COMPONENT window OPTIONAL)
    endforeach()
    add_custom_target(icons DEPENDS ${icon_files})
  endif()
endif()

file(GLOB documents ${PROJECT_SOURCE_DIR}/docs/*.md)
install(FILES ${documents} ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/kolmera-doc
        COMPONENT doc)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs/pictures DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/kolmera-doc COMPONENT doc
        FILES_MATCHING PATTERN "*.png")
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs/schemas DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/kolmera-doc COMPONENT doc)
foreach(language en sv)
  install_link(guide.${language}.md ../../${CMAKE_INSTALL_DATADIR}/doc/kolmera-doc/guide.${language}.md ${home} doc)
endforeach()

# The guide to be read in a browser.
find_program(PANDOC pandoc)
if(PANDOC)
  foreach(language en sv)
    set(page ${CMAKE_BINARY_DIR}/html/guide.${language}.html)
    add_custom_command(
      OUTPUT ${page}
      COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/html
      COMMAND ${PANDOC} --from gfm --to html5 --standalone --toc --toc-depth=3 --css guide.css --metadata lang=${language}
              --metadata pagetitle=Kolmera ${PROJECT_SOURCE_DIR}/docs/guide.${language}.md --output ${page}
      DEPENDS ${PROJECT_SOURCE_DIR}/docs/guide.${language}.md
      COMMENT "Making a page of the guide (${language})")
    list(APPEND html_pages ${page})
  endforeach()
  add_custom_target(html DEPENDS ${html_pages})
  set(html_folder ${CMAKE_INSTALL_DATADIR}/doc/kolmera-doc/html)
  install(FILES ${html_pages} ${install_folder}/guide.css DESTINATION ${html_folder} COMPONENT doc OPTIONAL)
  install_link(pictures ../pictures ${html_folder} doc)
endif()

# Manual pages, from what the programs say of themselves, so that they hold; in both languages.
set(pages ${CMAKE_BINARY_DIR}/man)
add_custom_target(manual
  COMMAND ${install_folder}/manpages.sh $<TARGET_FILE:kolmera-cli> ${pages} ${PROJECT_VERSION}
  DEPENDS kolmera-cli ${install_folder}/manpages.sh
  COMMENT "Writing the manual pages")
add_dependencies(manual language)
foreach(component cli window)
  install(DIRECTORY ${pages}/${component}/ DESTINATION ${CMAKE_INSTALL_MANDIR} COMPONENT ${component} OPTIONAL)
endforeach()
add_custom_target(package-files DEPENDS manual)
foreach(files icons html)
  if(TARGET ${files})
    add_dependencies(package-files ${files})
  endif()
endforeach()

# Debian packages: "./test --package" makes and tries them.
set(maintainer "The Kolmera developers <kolmera@packages.invalid>")
set(changelog ${CMAKE_BINARY_DIR}/changelog.gz)
file(WRITE ${CMAKE_BINARY_DIR}/changelog
     "kolmera (${PROJECT_VERSION}) unstable; urgency=medium\n\n  * See CHANGELOG.md in kolmera-doc.\n\n"
     " -- ${maintainer}  Mon, 23 Nov 2026 12:00:00 +0000\n")
add_custom_target(changelog COMMAND gzip -9 -n -c ${CMAKE_BINARY_DIR}/changelog > ${changelog})
add_dependencies(package-files changelog)
foreach(pair cli:kolmera-cli window:kolmera doc:kolmera-doc)
  string(REPLACE ":" ";" pair ${pair})
  list(GET pair 0 component)
  list(GET pair 1 package)
  install(FILES ${changelog} DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component} OPTIONAL)
  install(FILES ${install_folder}/copyright DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component})
endforeach()
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL cli doc)
if(KOLMERA_WINDOW)
  list(APPEND CPACK_COMPONENTS_ALL window)
endif()
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "${maintainer}")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SECTION database)
set(CPACK_DEBIAN_CLI_PACKAGE_NAME kolmera-cli)
set(CPACK_COMPONENT_CLI_DESCRIPTION "Price file import for the command line and schedules
Reads the price files of suppliers and wholesalers (EIO, RSK, FINFO, and any
other layout through a field mask) into a company's product register.

This package holds the program for servers and schedules, and the demo company.")
set(CPACK_DEBIAN_CLI_PACKAGE_SUGGESTS "kolmera, kolmera-doc, odbc-postgresql, odbc-mariadb, sqlite3")
set(CPACK_DEBIAN_WINDOW_PACKAGE_NAME kolmera)
set(CPACK_DEBIAN_WINDOW_PACKAGE_DEPENDS "kolmera-cli (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_WINDOW_PACKAGE_RECOMMENDS "kolmera-doc, qt6-wayland")
set(CPACK_COMPONENT_WINDOW_DESCRIPTION "Price file import with windows
Reads the price files of suppliers and wholesalers (EIO, RSK, FINFO, and any
other layout through a field mask) into a company's product register.

This package holds the desktop program.")
set(CPACK_DEBIAN_DOC_PACKAGE_NAME kolmera-doc)
set(CPACK_DEBIAN_DOC_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_DOC_PACKAGE_SECTION doc)
set(CPACK_COMPONENT_DOC_DESCRIPTION "Price file import: the user's guide
Reads the price files of suppliers and wholesalers (EIO, RSK, FINFO, and any
other layout through a field mask) into a company's product register.

This package holds the guide, in Swedish and English, which F1 opens.")
include(CPack)
