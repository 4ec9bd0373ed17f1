# The model catalogue: tables in, variables and their texts out. Knows neither Qt nor the network.
varkel_library(varkel_catalogue
  SOURCES
    ${CMAKE_CURRENT_LIST_DIR}/src/command_text.cpp
    ${CMAKE_CURRENT_LIST_DIR}/src/config_parser.cpp
    ${CMAKE_CURRENT_LIST_DIR}/src/csv_table.cpp
    ${CMAKE_CURRENT_LIST_DIR}/src/marvo_package.cpp
    ${CMAKE_CURRENT_LIST_DIR}/src/name_index.cpp
    ${CMAKE_CURRENT_LIST_DIR}/src/str_parser.cpp
    ${CMAKE_CURRENT_LIST_DIR}/src/table_cells.cpp
    ${CMAKE_CURRENT_LIST_DIR}/src/table_check.cpp
    ${CMAKE_CURRENT_LIST_DIR}/src/value_text.cpp
  DEPENDS quarn
  PRIVATE_DEPENDS CSV::CSV)
