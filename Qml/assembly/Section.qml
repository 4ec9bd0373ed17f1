import QtQuick 2.15
import "."

// A titled block of rows.
Column {
    id: section

    property alias title: heading.text

    SectionTitle {
        id: heading

        width: section.width
    }

    // Keeps the first row away from the line.
    Item {
        width: section.width
        height: Theme.gapTiny
    }
}
