package quorvane.parallax;

import java.lang.ref.WeakReference;
import java.util.Arrays;
import java.util.Iterator;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;

/**
 * What was decoded last, for all views of the process: a card that is scrolled out and back decodes
 * nothing. It holds a list's cards, but no picture of a large screen, and is emptied when the system
 * wants memory.
 */
final class PixelCache {
    static final PixelCache SHARED = new PixelCache(
            (int) Math.max(4L << 20, Math.min(32L << 20, Runtime.getRuntime().maxMemory() / 16)));

    private static final class Entry {
        final Object value;
        final int bytes;

        Entry(Object value, int bytes) {
            this.value = value;
            this.bytes = bytes;
        }
    }

    /** A source without a name is the same one as long as it lives, and is not kept alive. */
    private static final class Unnamed {
        private final WeakReference<ImageSource> source;
        private final int hash;

        Unnamed(ImageSource source) {
            this.source = new WeakReference<>(source);
            hash = System.identityHashCode(source);
        }

        @Override
        public boolean equals(Object other) {
            ImageSource mine = source.get();
            return other instanceof Unnamed && mine != null && mine == ((Unnamed) other).source.get();
        }

        @Override
        public int hashCode() {
            return hash;
        }
    }

    private final int capacity;
    private final Map<List<Object>, Entry> entries = new LinkedHashMap<>(16, 0.75f, true);
    private int held;

    PixelCache(int capacity) {
        this.capacity = capacity;
    }

    /** What was made of a file, told apart by {@code what}; null where it is not here. */
    synchronized Object get(ImageSource file, Object... what) {
        Entry entry = entries.get(key(file, what));
        return entry == null ? null : entry.value;
    }

    /** Keeps a value of some bytes, unless it would take more than half of all there is. */
    synchronized void put(Object value, int bytes, ImageSource file, Object... what) {
        if (bytes > capacity / 2) {
            return;
        }
        Entry before = entries.put(key(file, what), new Entry(value, bytes));
        held += bytes - (before == null ? 0 : before.bytes);
        Iterator<Entry> oldest = entries.values().iterator();
        while (held > capacity) {
            held -= oldest.next().bytes;
            oldest.remove();
        }
    }

    /** Forgets a file, which may be another one now. */
    synchronized void forget(ImageSource file) {
        Object name = name(file);
        Iterator<Map.Entry<List<Object>, Entry>> each = entries.entrySet().iterator();
        while (each.hasNext()) {
            Map.Entry<List<Object>, Entry> entry = each.next();
            if (entry.getKey().get(0).equals(name)) {
                held -= entry.getValue().bytes;
                each.remove();
            }
        }
    }

    synchronized void clear() {
        entries.clear();
        held = 0;
    }

    private static List<Object> key(ImageSource file, Object[] what) {
        Object[] key = new Object[what.length + 1];
        key[0] = name(file);
        System.arraycopy(what, 0, key, 1, what.length);
        return Arrays.asList(key);
    }

    private static Object name(ImageSource file) {
        return file instanceof NamedSource ? file : new Unnamed(file);
    }
}
