import QtQuick 2.15
import "."

// Five fields of view seen from above, one ring each, the first outermost; 0 degrees points up, clockwise.
Canvas {
    id: picture

    property var angles: []
    readonly property int fields: 5

    implicitWidth: Theme.tallRowHeight
    implicitHeight: Theme.tallRowHeight
    antialiasing: true

    onAnglesChanged: requestPaint()
    onPaint: {
        var context = getContext("2d");
        context.reset();
        var radius = Math.min(width, height) / 2 - Theme.gapTiny;
        var step = radius / (fields + 1);
        for (var i = 0; i < fields; ++i) {
            var ring = radius - i * step;
            drawRing(context, ring, 0, 360, Theme.button, step - 2);
            drawRing(context, ring, Number(angles[i]), Number(angles[i + fields]),
                     Theme.sectors[i], step - 2);
        }
        context.beginPath();
        context.fillStyle = Theme.text;
        context.arc(width / 2, height / 2, 2, 0, 2 * Math.PI);
        context.fill();
    }

    Accessible.role: Accessible.Graphic
    Accessible.name: "Fields of view seen from above"

    function drawRing(context, radius, start, end, color, thickness) {
        if (!(end !== start)) {
            return;
        }
        var span = end - start > 0 ? Math.min(360, end - start) : 360 + end - start;
        var from = (start - 90) * Math.PI / 180;
        context.beginPath();
        context.lineWidth = thickness;
        context.strokeStyle = color;
        context.arc(width / 2, height / 2, radius - thickness / 2, from, from + span * Math.PI / 180, false);
        context.stroke();
    }
}
