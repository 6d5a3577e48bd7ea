package quorvane.parallax;

import java.lang.reflect.InvocationTargetException;
import java.lang.reflect.Method;
import java.lang.reflect.Modifier;
import java.util.Arrays;
import java.util.Comparator;

/**
 * Runs every public method of {@link ParallaxRendererTest} as a test, each on an object and a
 * thread of its own, so that none finds another's context current. Says what failed and how many
 * passed, in the words of the project's other test programs, on standard error: the component's
 * lines on standard output are buffered apart and would cut into others.
 */
final class TestRun {
    private TestRun() {}

    /**
     * Arguments: the folder of expected_pictures, then a text that the names of the tests must
     * hold, if not all shall run.
     */
    public static void main(String[] arguments) throws InterruptedException {
        ParallaxRendererTest.folder = arguments[0];
        final String only = arguments.length > 1 ? arguments[1] : "";
        final Method[] methods = ParallaxRendererTest.class.getDeclaredMethods();
        Arrays.sort(methods, Comparator.comparing(Method::getName));
        int passed = 0;
        int failed = 0;
        for (Method method : methods) {
            final boolean test =
                    Modifier.isPublic(method.getModifiers()) && method.getName().contains(only);
            if (!test) {
                continue;
            }
            final Throwable[] failure = {null};
            final Thread thread = new Thread(() -> failure[0] = failureOf(method));
            thread.start();
            thread.join();
            if (failure[0] == null) {
                ++passed;
            } else {
                ++failed;
                System.err.println("[  FAILED  ] ParallaxRenderer." + method.getName());
                failure[0].printStackTrace(System.err);
            }
        }
        System.err.println("[  PASSED  ] " + passed + " tests.");
        if (failed > 0) {
            System.err.println("[  FAILED  ] " + failed + " tests.");
        }
        System.exit(failed > 0 || passed == 0 ? 1 : 0);
    }

    private static Throwable failureOf(Method test) {
        try {
            test.invoke(new ParallaxRendererTest());
            return null;
        } catch (InvocationTargetException thrown) {
            return thrown.getCause();
        } catch (ReflectiveOperationException unexpected) {
            return unexpected;
        }
    }
}
