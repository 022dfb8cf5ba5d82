#!/usr/bin/env python3
"""A window that files can be dragged out of, as out of a file manager.
usage: drag_files.py LIST      LIST: a file with a URI a line.  Needs python3-pyqt6."""
import pathlib
import sys

from PyQt6.QtCore import QMimeData, Qt
from PyQt6.QtGui import QDrag
from PyQt6.QtWidgets import QApplication, QWidget

SIDE = 120


class Source(QWidget):
    def mouseMoveEvent(self, event):
        if event.buttons() & Qt.MouseButton.LeftButton:
            drag, data = QDrag(self), QMimeData()
            data.setData("text/uri-list", pathlib.Path(sys.argv[1]).read_bytes())
            drag.setMimeData(data)
            drag.exec(Qt.DropAction.CopyAction)


application = QApplication(sys.argv)
source = Source()
source.setWindowTitle("files")
source.setGeometry(0, 600, SIDE, SIDE)
source.show()
sys.exit(application.exec())
