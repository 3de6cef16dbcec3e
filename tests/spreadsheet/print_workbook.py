"""Prints what openpyxl finds in a workbook: a line for each cell that is not empty."""
import sys

import openpyxl

for sheet in openpyxl.load_workbook(sys.argv[1]).worksheets:
    print(f"[{sheet.title} {sheet.sheet_state}]")
    for row in sheet.iter_rows():
        for cell in row:
            if cell.value is not None:
                print(cell.coordinate, type(cell.value).__name__, repr(cell.value), "bold" if cell.font.bold else "")
