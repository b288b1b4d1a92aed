import QtQuick
import QtQuick.Window
import TalvoConsent

Window {
    width: 390
    height: 844
    visible: true
    title: "Aurora Daily"

    ConsentSdk {
        id: consent
        apiUrl: url
        siteId: "demo"
        store: storeFile
        language: "en"
        onConsentChanged: console.log("consent:", JSON.stringify(this.consent))
        onEventRaised: event => {
            console.log("event:", event)
            if (event === "ConsentSent") Qt.callLater(Qt.quit)
        }
        onFailed: description => {
            console.log("failed:", description)
            Qt.exit(1)
        }
        Component.onCompleted: if (this.consent === null) showBanner()
    }

    // Runs analytics while the stored consent allows statistics, at this launch and at every later one.
    ConsentGate {
        sdk: consent
        category: "statistics"
        onStarted: console.log("analytics: started")
        onStopped: console.log("analytics: stopped")
    }

    Column {
        anchors.centerIn: parent
        spacing: 16
        Text {
            text: "Privacy settings"
            TapHandler { onTapped: consent.showBanner() }
        }
        Text {
            text: "Accept all"
            TapHandler { onTapped: consent.acceptAll() }
        }
    }

    // The example needs no user: after two seconds it accepts by itself, and the event ConsentSent ends it.
    Timer {
        interval: 2000
        running: true
        onTriggered: consent.acceptAll()
    }
}
