import QtQuick 2.15
import "../rows"

// A row of a page; its values determine the kind of row.
Loader {
    id: modelRow

    property int module: 0
    property int number: 0 // in the list
    property QtObject values // the roles of the page's list model

    signal refused(string message)
    signal upgradeRequested(url file, var start)

    sourceComponent: {
        switch (values.kind) {
        case -1:
            return heading;
        case 1:
            return textField;
        case 2:
            return switchAndField;
        case 3:
            return options;
        case 4:
            return upgrade;
        case 5:
            return fieldOfView;
        default:
            return textPair;
        }
    }

    Component {
        id: heading

        HeadingRow {
            module: modelRow.module
            values: modelRow.values
        }
    }

    Component {
        id: textPair

        TextPairRow {
            module: modelRow.module
            values: modelRow.values
        }
    }

    Component {
        id: textField

        TextRow {
            module: modelRow.module
            values: modelRow.values
        }
    }

    Component {
        id: switchAndField

        SwitchRow {
            module: modelRow.module
            values: modelRow.values
        }
    }

    Component {
        id: options

        ComboRow {
            module: modelRow.module
            values: modelRow.values
        }
    }

    Component {
        id: upgrade

        UpgradeRow {
            module: modelRow.module
            values: modelRow.values
            onRefused: modelRow.refused(message)
            onUpgradeRequested: modelRow.upgradeRequested(file, start)
        }
    }

    Component {
        id: fieldOfView

        FovRow {
            module: modelRow.module
            values: modelRow.values
        }
    }
}
