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

    // The first row keeps off the line.
    Item {
        width: section.width
        height: Theme.gapTiny
    }
}
