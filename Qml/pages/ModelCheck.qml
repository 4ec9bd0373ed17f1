import QtQml 2.15

// Checks by serial number and part number whether the connected sensor is of the selected model.
QtObject {
    readonly property string mismatch: "WARNING: Please note that a mismatch is detected between the lidar "
                                       + "model on the connection and the one selected. Some functions of VK "
                                       + "may be in error."
    readonly property string broken: "WARNING: There is a problem with the PN or SN code of the device you "
                                     + "are connecting to."
    readonly property string empty: "WARNING: Empty PN or SN code detected. Please check your device."
    readonly property string unread: "xxxxxx"

    // The warning to show; empty if there is none.
    function warning(partNumber, serialNumber, model) {
        if (partNumber !== "" && serialNumber !== "") {
            var known = [model, model.substring(0, 2)].some(function (part) {
                return partNumber.indexOf(part) >= 0 || serialNumber.indexOf(part) >= 0;
            });
            return known ? "" : mismatch;
        }
        var oneEmpty = (partNumber === "") !== (serialNumber === "");
        return oneEmpty && (partNumber !== unread || serialNumber !== unread) ? broken : empty;
    }
}
