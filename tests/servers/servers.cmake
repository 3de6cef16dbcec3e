# The tests of whole runs once more on database servers, and the tests of server companies. Each server is a fixture:
# started before its tests on loopback, with data of its own in a temporary folder, and stopped after them, also when
# the tests were killed (servers/server). A test process works in a database of its own (support/testserver.h).

# What whole runs do to a company file has no meaning on a server; everything else is the same.
set(file_only_tests
    LockedCompany.*                              # locks of the whole file (on servers: serverfaults_test)
    FullDisk.*  # the disk is the server's
    BrokenCompany.*                              # damages the file
    TwoRuns.*                                    # a test process has one company on a server
    RunStops.NothingOfTheCompanyIsTouchedBeforeTheMaskIsKnown  # looks for the file
    RunStops.CompaniesThatCannotBeOpened         # files that are damaged, no database, locked by a password
    PreviewOfAFile.*                             # a company file, and the folder that it lies in
    UndoOfAFile.*                                # a process that is killed with its session
)
list(JOIN file_only_tests ":" file_only_tests)

set(server_programs_postgresql psql initdb)
set(server_programs_mariadb mariadbd mariadb mariadb-install-db)

# The tests of a folder on one server.
function(add_server_tests server name filter)
  gtest_discover_tests(
    test_${name} TEST_PREFIX ${server}.${name}. TEST_FILTER ${filter} DISCOVERY_TIMEOUT 60
    PROPERTIES TIMEOUT 300 FIXTURES_REQUIRED ${server} ENVIRONMENT KOLMERA_TEST_SERVER=DSN=${server}
               ENVIRONMENT_MODIFICATION ODBCINI=set:${CMAKE_BINARY_DIR}/servers/${server}/odbc.ini)
endfunction()

foreach(server postgresql mariadb)
  find_test_programs(found ${server} ${server_programs_${server}})
  if(NOT found)
    continue()
  endif()
  set(script ${CMAKE_CURRENT_LIST_DIR}/server)
  set(folder ${CMAKE_BINARY_DIR}/servers/${server})
  add_test(NAME ${server}.start COMMAND ${script} start ${server} ${folder} $<TARGET_FILE:kolmera-cli>)
  add_test(NAME ${server}.stop COMMAND ${script} stop ${server} ${folder})
  set_tests_properties(${server}.start PROPERTIES FIXTURES_SETUP ${server} TIMEOUT 120)
  set_tests_properties(${server}.stop PROPERTIES FIXTURES_CLEANUP ${server} TIMEOUT 60)
  foreach(name import tradeformats undo preview)
    add_server_tests(${server} ${name} "-${file_only_tests}")
  endforeach()
  foreach(name ${server_folders})
    if(TARGET test_${name})
      add_server_tests(${server} ${name} "*")
    endif()
  endforeach()
endforeach()
