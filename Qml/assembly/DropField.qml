import QtQuick 2.15
import QtQuick.Templates 2.15 as T
import "."

// A field to drop one file on, or to click.
T.AbstractButton {
    id: field

    signal dropped(url file)

    hoverEnabled: true
    focusPolicy: Qt.StrongFocus
    opacity: enabled ? 1 : Theme.disabledOpacity

    Accessible.role: Accessible.Button
    Accessible.name: text

    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()

    contentItem: BodyText {
        text: field.text
        color: field.hovered || target.containsDrag ? Theme.text : Theme.textMuted
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.Wrap
        Accessible.ignored: true
    }

    background: Canvas {
        readonly property color lineColor: target.containsDrag || field.visualFocus
                                           ? Theme.borderFocus
                                           : field.hovered ? Theme.borderHover : Theme.border
        readonly property color fillColor: target.containsDrag || field.pressed ? Theme.button : Theme.field

        onLineColorChanged: requestPaint()
        onFillColorChanged: requestPaint()
        onPaint: {
            var context = getContext("2d");
            context.reset();
            context.roundedRect(1, 1, width - 2, height - 2, Theme.radiusLarge, Theme.radiusLarge);
            context.fillStyle = fillColor;
            context.fill();
            context.setLineDash([4, 3]);
            context.lineWidth = 1.5;
            context.strokeStyle = lineColor;
            context.stroke();
        }
    }

    DropArea {
        id: target

        anchors.fill: parent
        enabled: field.enabled
        onEntered: drag.accepted = drag.hasUrls
        onDropped: {
            if (drop.hasUrls && drop.urls.length > 0) {
                drop.acceptProposedAction();
                field.dropped(drop.urls[0]);
            }
        }
    }
}
