// The window with the focus, told on the session bus: what it belongs to, never its title.
const INTERFACE = `
<node>
  <interface name="com.brindlework.orvanta.Shell">
    <!-- Number of the window, 0 when none has the focus; identifier of the application's desktop
         entry; class of the window; process. What is not known is empty, or 0. -->
    <method name="GetFocus">
      <arg name="window" type="t" direction="out"/>
      <arg name="application" type="s" direction="out"/>
      <arg name="class" type="s" direction="out"/>
      <arg name="process" type="i" direction="out"/>
    </method>
    <signal name="FocusChanged">
      <arg name="window" type="t"/>
      <arg name="application" type="s"/>
      <arg name="class" type="s"/>
      <arg name="process" type="i"/>
    </signal>
    <!-- Nothing more is told until the extension is enabled again. -->
    <signal name="Ended"/>
  </interface>
</node>`;

class Focus {
    enable() {
        this._tracker = Shell.WindowTracker.get_default();
        this._object = Gio.DBusExportedObject.wrapJSObject(INTERFACE, this);
        this._object.export(Gio.DBus.session, '/com/brindlework/orvanta/Shell');
        this._connections = [
            [global.display, global.display.connect('notify::focus-window', () => this._tell())],
            [this._tracker, this._tracker.connect('notify::focus-app', () => this._tell())],
        ];
        this._told = null;
        this._tell();
    }

    disable() {
        for (const [source, connection] of this._connections)
            source.disconnect(connection);
        this._object.emit_signal('Ended', null);
        this._object.unexport();
        this._tracker = this._object = this._connections = this._told = null;
    }

    GetFocus() {
        const window = global.display.focus_window;
        if (window === null)
            return [0, '', '', 0];
        const application = this._tracker.get_window_app(window)?.get_id() ?? '';
        return [
            // It counts from 0.
            window.get_stable_sequence() + 1,
            // The shell gives others a number.
            application.endsWith('.desktop') ? application.slice(0, -'.desktop'.length) : '',
            window.get_wm_class() ?? '',
            window.get_pid(),
        ];
    }

    _tell() {
        const focus = this.GetFocus();
        const told = JSON.stringify(focus);
        if (this._told !== told) {
            this._told = told;
            this._object.emit_signal('FocusChanged', new GLib.Variant('(tssi)', focus));
        }
    }
}
