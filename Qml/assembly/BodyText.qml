import QtQuick 2.15
import "."

// Plain text in the theme's look. What it shows may come from the sensor, so it is never read as markup.
Text {
    color: Theme.text
    font.family: Theme.family
    font.pixelSize: Theme.font
    textFormat: Text.PlainText
    verticalAlignment: Text.AlignVCenter

    Accessible.role: Accessible.StaticText
    Accessible.name: text
}
