#include <array>

#include "indexer/languages/java/library.h"

namespace context_delta::indexer::java {
namespace {

// clang-format off
constexpr auto TYPES = std::to_array<LibraryType>({
    {"AccessibleObject", "java.lang.reflect", "AnnotatedElement", "", "isAccessible:boolean"},
    {"AnnotatedElement", "java.lang.reflect", "", "", "getAnnotations:Annotation[] isAnnotationPresent:boolean"},
    {"Annotation", "java.lang.annotation", "", "", "annotationType:Class<?>"},
    {"Appendable", "java.lang", "", "", ""},
    {"ArithmeticException", "java.lang", "RuntimeException", "", ""},
    {"Array", "java.lang.reflect", "", "", "getLength:int get:Object newInstance:Object"},
    {"ArrayDeque", "java.util", "Deque Cloneable Serializable", "", "size:int isEmpty:boolean contains:boolean add:boolean addAll:boolean containsAll:boolean "
     "removeAll:boolean retainAll:boolean toArray:Object[] iterator:Iterator<0> "
     "stream:Stream<0> poll:0 peek:0 pop:0 getFirst:0 getLast:0 pollFirst:0 pollLast:0 "
     "peekFirst:0 peekLast:0 removeFirst:0 removeLast:0 remove:?"},
    {"ArrayIndexOutOfBoundsException", "java.lang", "IndexOutOfBoundsException", "", ""},
    {"ArrayList", "java.util", "List RandomAccess Cloneable Serializable", "", "size:int isEmpty:boolean contains:boolean add:boolean addAll:boolean containsAll:boolean "
     "removeAll:boolean retainAll:boolean toArray:Object[] iterator:Iterator<0> "
     "stream:Stream<0> get:0 set:0 indexOf:int lastIndexOf:int subList:List<0> "
     "listIterator:ListIterator<0> remove:?"},
    {"ArrayStoreException", "java.lang", "RuntimeException", "", ""},
    {"Arrays", "java.util", "", "", "hashCode:int equals:boolean toString:String deepToString:String deepHashCode:int "
     "deepEquals:boolean binarySearch:int"},
    {"AssertionError", "java.lang", "Error", "", ""},
    {"AtomicBoolean", "java.util.concurrent.atomic", "Serializable", "", "get:boolean getAndSet:boolean compareAndSet:boolean"},
    {"AtomicInteger", "java.util.concurrent.atomic", "Number", "", "get:int incrementAndGet:int getAndIncrement:int decrementAndGet:int addAndGet:int "
     "getAndAdd:int getAndSet:int intValue:int longValue:long"},
    {"AtomicLong", "java.util.concurrent.atomic", "Number", "", "get:long incrementAndGet:long getAndIncrement:long decrementAndGet:long addAndGet:long "
     "getAndAdd:long getAndSet:long intValue:int longValue:long"},
    {"AtomicReference", "java.util.concurrent.atomic", "Serializable", "", "get:0 getAndSet:0 updateAndGet:0"},
    {"AutoCloseable", "java.lang", "", "0v", ""},
    {"BaseStream", "java.util.stream", "AutoCloseable", "", ""},
    {"BiConsumer", "java.util.function", "", "2v", ""},
    {"BiFunction", "java.util.function", "", "2r", "apply:2"},
    {"BiPredicate", "java.util.function", "", "2r", "test:boolean"},
    {"BigDecimal", "java.math", "Number Comparable", "", "compareTo:int scale:int precision:int signum:int add:BigDecimal subtract:BigDecimal "
     "multiply:BigDecimal divide:BigDecimal negate:BigDecimal setScale:BigDecimal "
     "toBigInteger:BigInteger toPlainString:String valueOf:BigDecimal"},
    {"BigInteger", "java.math", "Number Comparable", "", "compareTo:int bitLength:int signum:int add:BigInteger subtract:BigInteger "
     "multiply:BigInteger divide:BigInteger negate:BigInteger valueOf:BigInteger"},
    {"BinaryOperator", "java.util.function", "BiFunction", "2r", "apply:0"},
    {"BitSet", "java.util", "Cloneable Serializable", "", "get:boolean cardinality:int length:int size:int nextSetBit:int"},
    {"Boolean", "java.lang", "Comparable Serializable", "", "booleanValue:boolean valueOf:Boolean parseBoolean:boolean compare:int toString:String "
     "TRUE.:Boolean FALSE.:Boolean"},
    {"BooleanSupplier", "java.util.function", "", "0r", "getAsBoolean:boolean"},
    {"BufferedInputStream", "java.io", "FilterInputStream", "", ""},
    {"BufferedOutputStream", "java.io", "FilterOutputStream", "", ""},
    {"BufferedReader", "java.io", "Reader", "", "readLine:String read:int lines:Stream<String>"},
    {"BufferedWriter", "java.io", "Writer", "", ""},
    {"Byte", "java.lang", "Number Comparable Serializable", "", "intValue:int longValue:long doubleValue:double floatValue:float shortValue:short "
     "byteValue:byte valueOf:Byte compare:int compareTo:int toString:String toHexString:String "
     "hashCode:int max:byte min:byte signum:int bitCount:int MAX_VALUE.:byte MIN_VALUE.:byte "
     "parseByte:byte"},
    {"ByteArrayInputStream", "java.io", "InputStream", "", ""},
    {"ByteArrayOutputStream", "java.io", "OutputStream", "", "toByteArray:byte[] size:int toString:String"},
    {"ByteBuffer", "java.nio", "Comparable", "", "get:byte getInt:int getLong:long remaining:int position:int limit:int"},
    {"Calendar", "java.util", "Serializable Cloneable Comparable", "", "getTime:Date getTimeZone:TimeZone getTimeInMillis:long get:int getInstance:Calendar "
     "getActualMaximum:int getFirstDayOfWeek:int *.:int"},
    {"Callable", "java.util.concurrent", "", "0r", "call:0"},
    {"CharArrayReader", "java.io", "Reader", "", ""},
    {"CharArrayWriter", "java.io", "Writer", "", ""},
    {"CharBuffer", "java.nio", "CharSequence Appendable Readable Comparable", "", "wrap:CharBuffer"},
    {"CharSequence", "java.lang", "", "", "length:int charAt:char subSequence:CharSequence isEmpty:boolean toString:String "
     "chars:IntStream"},
    {"Character", "java.lang", "Comparable Serializable", "", "charValue:char valueOf:Character isDigit:boolean isLetter:boolean "
     "isLetterOrDigit:boolean isWhitespace:boolean isUpperCase:boolean isLowerCase:boolean "
     "toString:String compare:int getNumericValue:int isSurrogate:boolean "
     "isHighSurrogate:boolean isLowSurrogate:boolean toChars:char[] charCount:int "
     "MAX_VALUE.:char MIN_VALUE.:char"},
    {"Charset", "java.nio.charset", "Comparable", "", "name:String displayName:String forName:Charset defaultCharset:Charset"},
    {"Class", "java.lang", "Serializable Type GenericDeclaration AnnotatedElement", "", "getName:String getSimpleName:String getTypeName:String getCanonicalName:String "
     "getPackage:Package getClassLoader:ClassLoader isArray:boolean isInterface:boolean "
     "isPrimitive:boolean isEnum:boolean isInstance:boolean isAssignableFrom:boolean "
     "getModifiers:int getComponentType:Class<?> getSuperclass:Class<?> "
     "getInterfaces:Class<?>[] getEnclosingClass:Class<?> getDeclaringClass:Class<?> "
     "getDeclaredFields:Field[] getFields:Field[] getMethods:Method[] "
     "getDeclaredMethods:Method[] getConstructors:Constructor<?>[] "
     "getDeclaredConstructors:Constructor<?>[] getMethod:Method getDeclaredMethod:Method "
     "getField:Field getDeclaredField:Field getConstructor:Constructor<0> "
     "getDeclaredConstructor:Constructor<0> getTypeParameters:TypeVariable<?>[] "
     "getGenericSuperclass:Type getGenericInterfaces:Type[] cast:0 newInstance:0 "
     "getEnumConstants:0[] forName:Class<?> desiredAssertionStatus:boolean "
     "isAnnotation:boolean isMemberClass:boolean isAnonymousClass:boolean isLocalClass:boolean "
     "toString:String hashCode:int"},
    {"ClassCastException", "java.lang", "RuntimeException", "", ""},
    {"ClassLoader", "java.lang", "", "", "getResource:URL getResourceAsStream:InputStream loadClass:Class<?> getParent:ClassLoader"},
    {"ClassNotFoundException", "java.lang", "ReflectiveOperationException", "", ""},
    {"ClassValue", "java.lang", "", "", ""},
    {"CloneNotSupportedException", "java.lang", "Exception", "", ""},
    {"Cloneable", "java.lang", "", "", ""},
    {"Closeable", "java.io", "AutoCloseable", "0v", ""},
    {"Collection", "java.util", "Iterable", "", "size:int isEmpty:boolean contains:boolean add:boolean remove:boolean addAll:boolean "
     "containsAll:boolean removeAll:boolean retainAll:boolean toArray:Object[] "
     "iterator:Iterator<0> stream:Stream<0>"},
    {"Collector", "java.util.stream", "", "", ""},
    {"Comparable", "java.lang", "", "1r", "compareTo:int"},
    {"Comparator", "java.util", "", "2r", "compare:int reversed:Comparator<0>"},
    {"ConcurrentHashMap", "java.util.concurrent", "ConcurrentMap Serializable", "", "get:1 put:1 remove:1 getOrDefault:1 putIfAbsent:1 computeIfAbsent:1 size:int "
     "isEmpty:boolean containsKey:boolean containsValue:boolean keySet:Set<0> "
     "values:Collection<1> entrySet:Set<Map.Entry<0,1>>"},
    {"ConcurrentMap", "java.util.concurrent", "Map", "", "get:1 put:1 remove:1 getOrDefault:1 putIfAbsent:1 computeIfAbsent:1 size:int "
     "isEmpty:boolean containsKey:boolean containsValue:boolean keySet:Set<0> "
     "values:Collection<1> entrySet:Set<Map.Entry<0,1>>"},
    {"ConcurrentModificationException", "java.util", "RuntimeException", "", ""},
    {"Condition", "java.util.concurrent.locks", "", "", ""},
    {"Constructor", "java.lang.reflect", "Executable", "", "newInstance:0 getParameterTypes:Class<?>[] getName:String getModifiers:int "
     "getDeclaringClass:Class<0> isVarArgs:boolean"},
    {"Consumer", "java.util.function", "", "1v", "accept:void andThen:Consumer<0>"},
    {"CopyOnWriteArrayList", "java.util.concurrent", "List RandomAccess Cloneable Serializable", "", "size:int isEmpty:boolean contains:boolean add:boolean addAll:boolean containsAll:boolean "
     "removeAll:boolean retainAll:boolean toArray:Object[] iterator:Iterator<0> "
     "stream:Stream<0> get:0 set:0 indexOf:int lastIndexOf:int subList:List<0> "
     "listIterator:ListIterator<0>"},
    {"CountDownLatch", "java.util.concurrent", "", "", ""},
    {"Currency", "java.util", "Serializable", "", "getCurrencyCode:String"},
    {"DataInputStream", "java.io", "FilterInputStream", "", ""},
    {"DataOutputStream", "java.io", "FilterOutputStream", "", ""},
    {"Date", "java.util", "Serializable Cloneable Comparable", "", "getTime:long before:boolean after:boolean compareTo:int toInstant:Instant"},
    {"DateFormat", "java.text", "Format", "", "format:String parse:Date *.:int"},
    {"DecimalFormat", "java.text", "NumberFormat", "", "format:String parse:Number"},
    {"Deprecated", "java.lang", "", "", ""},
    {"Deque", "java.util", "Queue", "", "size:int isEmpty:boolean contains:boolean add:boolean addAll:boolean containsAll:boolean "
     "removeAll:boolean retainAll:boolean toArray:Object[] iterator:Iterator<0> "
     "stream:Stream<0> poll:0 peek:0 pop:0 getFirst:0 getLast:0 pollFirst:0 pollLast:0 "
     "peekFirst:0 peekLast:0 removeFirst:0 removeLast:0 remove:?"},
    {"Double", "java.lang", "Number Comparable Serializable", "", "intValue:int longValue:long doubleValue:double floatValue:float shortValue:short "
     "byteValue:byte valueOf:Double compare:int compareTo:int toString:String "
     "toHexString:String hashCode:int max:double min:double signum:int bitCount:int "
     "MAX_VALUE.:double MIN_VALUE.:double parseDouble:double sum:double isNaN:boolean "
     "isInfinite:boolean doubleToLongBits:long doubleToRawLongBits:long "
     "longBitsToDouble:double *.:double"},
    {"DoubleBinaryOperator", "java.util.function", "", "2r", "applyAsDouble:double"},
    {"DoubleConsumer", "java.util.function", "", "1v", ""},
    {"DoubleFunction", "java.util.function", "", "1r", "apply:0"},
    {"DoublePredicate", "java.util.function", "", "1r", "test:boolean"},
    {"DoubleStream", "java.util.stream", "BaseStream", "", "count:long boxed:Stream<Double> filter:DoubleStream sum:double map:DoubleStream"},
    {"DoubleSupplier", "java.util.function", "", "0r", "getAsDouble:double"},
    {"DoubleToIntFunction", "java.util.function", "", "1r", "applyAsInt:int"},
    {"DoubleToLongFunction", "java.util.function", "", "1r", "applyAsLong:long"},
    {"DoubleUnaryOperator", "java.util.function", "", "1r", "applyAsDouble:double"},
    {"Duration", "java.time", "Comparable Serializable", "", "toMillis:long toNanos:long getSeconds:long getNano:int ofMillis:Duration "
     "ofSeconds:Duration ofNanos:Duration between:Duration plus:Duration minus:Duration"},
    {"EOFException", "java.io", "IOException", "", ""},
    {"Enum", "java.lang", "Comparable Serializable", "", "name:String ordinal:int compareTo:int getDeclaringClass:Class<0> toString:String"},
    {"EnumConstantNotPresentException", "java.lang", "RuntimeException", "", ""},
    {"EnumMap", "java.util", "Map Cloneable Serializable", "", "get:1 put:1 remove:1 getOrDefault:1 putIfAbsent:1 computeIfAbsent:1 size:int "
     "isEmpty:boolean containsKey:boolean containsValue:boolean keySet:Set<0> "
     "values:Collection<1> entrySet:Set<Map.Entry<0,1>>"},
    {"EnumSet", "java.util", "Set Cloneable Serializable", "", "size:int isEmpty:boolean contains:boolean add:boolean remove:boolean addAll:boolean "
     "containsAll:boolean removeAll:boolean retainAll:boolean toArray:Object[] "
     "iterator:Iterator<0> stream:Stream<0>"},
    {"Enumeration", "java.util", "", "", "nextElement:0 hasMoreElements:boolean"},
    {"Error", "java.lang", "Throwable", "", ""},
    {"Exception", "java.lang", "Throwable", "", ""},
    {"ExceptionInInitializerError", "java.lang", "LinkageError", "", ""},
    {"Executable", "java.lang.reflect", "AccessibleObject Member GenericDeclaration", "", "getParameterTypes:Class<?>[] getName:String getModifiers:int getDeclaringClass:Class<?> "
     "isVarArgs:boolean getParameterCount:int getGenericParameterTypes:Type[]"},
    {"ExecutionException", "java.util.concurrent", "Exception", "", ""},
    {"Executor", "java.util.concurrent", "", "1v", ""},
    {"ExecutorService", "java.util.concurrent", "Executor", "", ""},
    {"Field", "java.lang.reflect", "AccessibleObject Member", "", "getName:String getType:Class<?> getGenericType:Type getModifiers:int "
     "getDeclaringClass:Class<?> get:Object isSynthetic:boolean isEnumConstant:boolean"},
    {"FieldPosition", "java.text", "", "", ""},
    {"File", "java.io", "Serializable Comparable", "", "getName:String getPath:String getAbsolutePath:String getParentFile:File getParent:String "
     "exists:boolean isDirectory:boolean isFile:boolean length:long listFiles:File[] "
     "toPath:Path delete:boolean mkdirs:boolean toURI:URI getAbsoluteFile:File "
     "getCanonicalPath:String"},
    {"FileInputStream", "java.io", "InputStream", "", ""},
    {"FileNotFoundException", "java.io", "IOException", "", ""},
    {"FileOutputStream", "java.io", "OutputStream", "", ""},
    {"FileReader", "java.io", "InputStreamReader", "", ""},
    {"FileWriter", "java.io", "OutputStreamWriter", "", ""},
    {"FilterInputStream", "java.io", "InputStream", "", ""},
    {"FilterOutputStream", "java.io", "OutputStream", "", ""},
    {"Float", "java.lang", "Number Comparable Serializable", "", "intValue:int longValue:long doubleValue:double floatValue:float shortValue:short "
     "byteValue:byte valueOf:Float compare:int compareTo:int toString:String "
     "toHexString:String hashCode:int max:float min:float signum:int bitCount:int "
     "MAX_VALUE.:float MIN_VALUE.:float parseFloat:float isNaN:boolean isInfinite:boolean "
     "floatToIntBits:int floatToRawIntBits:int intBitsToFloat:float *.:float"},
    {"Flushable", "java.io", "", "0v", ""},
    {"Format", "java.text", "Serializable Cloneable", "", "format:String parseObject:Object"},
    {"Function", "java.util.function", "", "1r", "apply:1"},
    {"FunctionalInterface", "java.lang", "", "", ""},
    {"Future", "java.util.concurrent", "", "", "get:0 isDone:boolean isCancelled:boolean cancel:boolean"},
    {"GenericArrayType", "java.lang.reflect", "Type", "", "getGenericComponentType:Type"},
    {"GenericDeclaration", "java.lang.reflect", "AnnotatedElement", "", "getTypeParameters:TypeVariable<?>[]"},
    {"GregorianCalendar", "java.util", "Calendar", "", "getTime:Date getTimeZone:TimeZone getTimeInMillis:long get:int *.:int"},
    {"HashMap", "java.util", "Map Cloneable Serializable", "", "get:1 put:1 remove:1 getOrDefault:1 putIfAbsent:1 computeIfAbsent:1 size:int "
     "isEmpty:boolean containsKey:boolean containsValue:boolean keySet:Set<0> "
     "values:Collection<1> entrySet:Set<Map.Entry<0,1>>"},
    {"HashSet", "java.util", "Set Cloneable Serializable", "", "size:int isEmpty:boolean contains:boolean add:boolean remove:boolean addAll:boolean "
     "containsAll:boolean removeAll:boolean retainAll:boolean toArray:Object[] "
     "iterator:Iterator<0> stream:Stream<0>"},
    {"Hashtable", "java.util", "Map Cloneable Serializable", "", "get:1 put:1 remove:1 getOrDefault:1 putIfAbsent:1 computeIfAbsent:1 size:int "
     "isEmpty:boolean containsKey:boolean containsValue:boolean keySet:Set<0> "
     "values:Collection<1> entrySet:Set<Map.Entry<0,1>>"},
    {"IOException", "java.io", "Exception", "", ""},
    {"IdentityHashMap", "java.util", "Map Cloneable Serializable", "", "get:1 put:1 remove:1 getOrDefault:1 putIfAbsent:1 computeIfAbsent:1 size:int "
     "isEmpty:boolean containsKey:boolean containsValue:boolean keySet:Set<0> "
     "values:Collection<1> entrySet:Set<Map.Entry<0,1>>"},
    {"IllegalAccessException", "java.lang", "ReflectiveOperationException", "", ""},
    {"IllegalArgumentException", "java.lang", "RuntimeException", "", ""},
    {"IllegalCallerException", "java.lang", "RuntimeException", "", ""},
    {"IllegalMonitorStateException", "java.lang", "RuntimeException", "", ""},
    {"IllegalStateException", "java.lang", "RuntimeException", "", ""},
    {"IncompatibleClassChangeError", "java.lang", "LinkageError", "", ""},
    {"IndexOutOfBoundsException", "java.lang", "RuntimeException", "", ""},
    {"InetAddress", "java.net", "Serializable", "", "getHostAddress:String getHostName:String"},
    {"InheritableThreadLocal", "java.lang", "", "", ""},
    {"InputMismatchException", "java.util", "NoSuchElementException", "", ""},
    {"InputStream", "java.io", "Closeable", "", "read:int available:int"},
    {"InputStreamReader", "java.io", "Reader", "", ""},
    {"Instant", "java.time", "Comparable Serializable", "", "toEpochMilli:long now:Instant getEpochSecond:long plus:Instant minus:Instant"},
    {"InstantiationException", "java.lang", "ReflectiveOperationException", "", ""},
    {"IntBinaryOperator", "java.util.function", "", "2r", "applyAsInt:int"},
    {"IntConsumer", "java.util.function", "", "1v", ""},
    {"IntFunction", "java.util.function", "", "1r", "apply:0"},
    {"IntPredicate", "java.util.function", "", "1r", "test:boolean"},
    {"IntStream", "java.util.stream", "BaseStream", "", "count:long boxed:Stream<Integer> filter:IntStream sum:int map:IntStream"},
    {"IntSupplier", "java.util.function", "", "0r", "getAsInt:int"},
    {"IntToDoubleFunction", "java.util.function", "", "1r", "applyAsDouble:double"},
    {"IntToLongFunction", "java.util.function", "", "1r", "applyAsLong:long"},
    {"IntUnaryOperator", "java.util.function", "", "1r", "applyAsInt:int"},
    {"Integer", "java.lang", "Number Comparable Serializable", "", "intValue:int longValue:long doubleValue:double floatValue:float shortValue:short "
     "byteValue:byte valueOf:Integer compare:int compareTo:int toString:String "
     "toHexString:String hashCode:int max:int min:int signum:int bitCount:int MAX_VALUE.:int "
     "MIN_VALUE.:int parseInt:int sum:int"},
    {"InternalError", "java.lang", "VirtualMachineError", "", ""},
    {"InterruptedException", "java.lang", "Exception", "", ""},
    {"InvocationTargetException", "java.lang.reflect", "ReflectiveOperationException", "", "getTargetException:Throwable getCause:Throwable"},
    {"Iterable", "java.lang", "", "0r", "iterator:Iterator<0> spliterator:Spliterator<0>"},
    {"Iterator", "java.util", "", "", "next:0 hasNext:boolean"},
    {"LinkageError", "java.lang", "Error", "", ""},
    {"LinkedHashMap", "java.util", "HashMap", "", "get:1 put:1 remove:1 getOrDefault:1 putIfAbsent:1 computeIfAbsent:1 size:int "
     "isEmpty:boolean containsKey:boolean containsValue:boolean keySet:Set<0> "
     "values:Collection<1> entrySet:Set<Map.Entry<0,1>>"},
    {"LinkedHashSet", "java.util", "HashSet", "", "size:int isEmpty:boolean contains:boolean add:boolean remove:boolean addAll:boolean "
     "containsAll:boolean removeAll:boolean retainAll:boolean toArray:Object[] "
     "iterator:Iterator<0> stream:Stream<0>"},
    {"LinkedList", "java.util", "List Deque Cloneable Serializable", "", "size:int isEmpty:boolean contains:boolean add:boolean addAll:boolean containsAll:boolean "
     "removeAll:boolean retainAll:boolean toArray:Object[] iterator:Iterator<0> "
     "stream:Stream<0> get:0 set:0 indexOf:int lastIndexOf:int subList:List<0> "
     "listIterator:ListIterator<0> getFirst:0 getLast:0 poll:0 peek:0 pop:0 removeFirst:0 "
     "removeLast:0 remove:?"},
    {"List", "java.util", "Collection", "", "size:int isEmpty:boolean contains:boolean add:boolean addAll:boolean containsAll:boolean "
     "removeAll:boolean retainAll:boolean toArray:Object[] iterator:Iterator<0> "
     "stream:Stream<0> get:0 set:0 indexOf:int lastIndexOf:int subList:List<0> "
     "listIterator:ListIterator<0> of:List<?> remove:?"},
    {"ListIterator", "java.util", "Iterator", "", "next:0 previous:0 hasNext:boolean hasPrevious:boolean nextIndex:int"},
    {"LocalDate", "java.time", "Comparable Serializable Temporal TemporalAccessor", "", ""},
    {"LocalDateTime", "java.time", "Comparable Serializable Temporal TemporalAccessor", "", ""},
    {"LocalTime", "java.time", "Comparable Serializable Temporal TemporalAccessor", "", ""},
    {"Locale", "java.util", "Cloneable Serializable", "", "getLanguage:String getCountry:String getVariant:String toString:String getDefault:Locale "
     "forLanguageTag:Locale ROOT.:Locale US.:Locale ENGLISH.:Locale UK.:Locale FRANCE.:Locale "
     "GERMANY.:Locale *.:Locale"},
    {"Lock", "java.util.concurrent.locks", "", "", ""},
    {"Long", "java.lang", "Number Comparable Serializable", "", "intValue:int longValue:long doubleValue:double floatValue:float shortValue:short "
     "byteValue:byte valueOf:Long compare:int compareTo:int toString:String toHexString:String "
     "hashCode:int max:long min:long signum:int bitCount:int MAX_VALUE.:long MIN_VALUE.:long "
     "parseLong:long sum:long"},
    {"LongBinaryOperator", "java.util.function", "", "2r", "applyAsLong:long"},
    {"LongConsumer", "java.util.function", "", "1v", ""},
    {"LongFunction", "java.util.function", "", "1r", "apply:0"},
    {"LongPredicate", "java.util.function", "", "1r", "test:boolean"},
    {"LongStream", "java.util.stream", "BaseStream", "", "count:long boxed:Stream<Long> filter:LongStream sum:long map:LongStream"},
    {"LongSupplier", "java.util.function", "", "0r", "getAsLong:long"},
    {"LongToDoubleFunction", "java.util.function", "", "1r", "applyAsDouble:double"},
    {"LongToIntFunction", "java.util.function", "", "1r", "applyAsInt:int"},
    {"LongUnaryOperator", "java.util.function", "", "1r", "applyAsLong:long"},
    {"Map", "java.util", "", "", "get:1 put:1 remove:1 getOrDefault:1 putIfAbsent:1 computeIfAbsent:1 size:int "
     "isEmpty:boolean containsKey:boolean containsValue:boolean keySet:Set<0> "
     "values:Collection<1> entrySet:Set<Map.Entry<0,1>>"},
    {"Map.Entry", "java.util", "", "", "getKey:0 getValue:1"},
    {"MatchResult", "java.util.regex", "", "", ""},
    {"Matcher", "java.util.regex", "MatchResult", "", "group:String find:boolean matches:boolean start:int end:int lookingAt:boolean "
     "groupCount:int"},
    {"Math", "java.lang", "", "", "floor:double ceil:double sqrt:double pow:double random:double log:double exp:double "
     "sin:double cos:double floorMod:int multiplyExact:long toIntExact:int"},
    {"Member", "java.lang.reflect", "", "", "getDeclaringClass:Class<?> getName:String getModifiers:int isSynthetic:boolean"},
    {"MessageFormat", "java.text", "Format", "", ""},
    {"Method", "java.lang.reflect", "Executable", "", "getReturnType:Class<?> getGenericReturnType:Type invoke:Object "
     "getParameterTypes:Class<?>[] getName:String getModifiers:int getDeclaringClass:Class<?> "
     "isVarArgs:boolean isDefault:boolean isBridge:boolean isSynthetic:boolean"},
    {"MissingResourceException", "java.util", "RuntimeException", "", ""},
    {"Modifier", "java.lang.reflect", "", "", "isStatic:boolean isFinal:boolean isPublic:boolean isPrivate:boolean isProtected:boolean "
     "isAbstract:boolean isTransient:boolean isInterface:boolean *.:int"},
    {"Module", "java.lang", "", "", ""},
    {"ModuleLayer", "java.lang", "", "", ""},
    {"NavigableMap", "java.util", "SortedMap", "", "get:1 put:1 remove:1 getOrDefault:1 putIfAbsent:1 computeIfAbsent:1 size:int "
     "isEmpty:boolean containsKey:boolean containsValue:boolean keySet:Set<0> "
     "values:Collection<1> entrySet:Set<Map.Entry<0,1>> firstEntry:Map.Entry<0,1> "
     "lastEntry:Map.Entry<0,1> floorEntry:Map.Entry<0,1> ceilingEntry:Map.Entry<0,1>"},
    {"NavigableSet", "java.util", "SortedSet", "", "size:int isEmpty:boolean contains:boolean add:boolean remove:boolean addAll:boolean "
     "containsAll:boolean removeAll:boolean retainAll:boolean toArray:Object[] "
     "iterator:Iterator<0> stream:Stream<0> first:0 last:0 floor:0 ceiling:0"},
    {"NegativeArraySizeException", "java.lang", "RuntimeException", "", ""},
    {"NoClassDefFoundError", "java.lang", "LinkageError", "", ""},
    {"NoSuchElementException", "java.util", "RuntimeException", "", ""},
    {"NoSuchFieldException", "java.lang", "ReflectiveOperationException", "", ""},
    {"NoSuchMethodException", "java.lang", "ReflectiveOperationException", "", ""},
    {"NullPointerException", "java.lang", "RuntimeException", "", ""},
    {"Number", "java.lang", "Serializable", "", "intValue:int longValue:long doubleValue:double floatValue:float shortValue:short "
     "byteValue:byte"},
    {"NumberFormat", "java.text", "Format", "", "format:String parse:Number"},
    {"NumberFormatException", "java.lang", "IllegalArgumentException", "", ""},
    {"ObjDoubleConsumer", "java.util.function", "", "2v", ""},
    {"ObjIntConsumer", "java.util.function", "", "2v", ""},
    {"ObjLongConsumer", "java.util.function", "", "2v", ""},
    {"Object", "java.lang", "", "", "toString:String hashCode:int equals:boolean getClass:Class<?>"},
    {"ObjectInputStream", "java.io", "InputStream", "", "readObject:Object"},
    {"ObjectOutputStream", "java.io", "OutputStream", "", ""},
    {"Objects", "java.util", "", "", "equals:boolean hash:int hashCode:int toString:String isNull:boolean nonNull:boolean "
     "compare:int"},
    {"OffsetDateTime", "java.time", "Comparable Serializable Temporal TemporalAccessor", "", ""},
    {"Optional", "java.util", "", "", "get:0 isPresent:boolean isEmpty:boolean orElse:0 orElseGet:0 orElseThrow:0"},
    {"OutOfMemoryError", "java.lang", "VirtualMachineError", "", ""},
    {"OutputStream", "java.io", "Closeable Flushable", "", ""},
    {"OutputStreamWriter", "java.io", "Writer", "", ""},
    {"Override", "java.lang", "", "", ""},
    {"Package", "java.lang", "", "", ""},
    {"ParameterizedType", "java.lang.reflect", "Type", "", "getRawType:Type getOwnerType:Type getActualTypeArguments:Type[]"},
    {"ParseException", "java.text", "Exception", "", ""},
    {"ParsePosition", "java.text", "", "", "getIndex:int getErrorIndex:int"},
    {"Path", "java.nio.file", "Comparable Iterable", "", "toFile:File getFileName:Path getParent:Path resolve:Path toString:String normalize:Path"},
    {"Pattern", "java.util.regex", "Serializable", "", "matcher:Matcher compile:Pattern matches:boolean pattern:String split:String[] *.:int"},
    {"Predicate", "java.util.function", "", "1r", "test:boolean negate:Predicate<0> and:Predicate<0> or:Predicate<0>"},
    {"PrintStream", "java.io", "FilterOutputStream Appendable", "", ""},
    {"PrintWriter", "java.io", "Writer", "", ""},
    {"PriorityQueue", "java.util", "Queue Serializable", "", "size:int isEmpty:boolean contains:boolean add:boolean addAll:boolean containsAll:boolean "
     "removeAll:boolean retainAll:boolean toArray:Object[] iterator:Iterator<0> "
     "stream:Stream<0> poll:0 peek:0 remove:?"},
    {"Process", "java.lang", "", "", ""},
    {"ProcessBuilder", "java.lang", "", "", ""},
    {"ProcessHandle", "java.lang", "", "", ""},
    {"Properties", "java.util", "Hashtable", "", "getProperty:String stringPropertyNames:Set<String>"},
    {"Queue", "java.util", "Collection", "", "size:int isEmpty:boolean contains:boolean add:boolean addAll:boolean containsAll:boolean "
     "removeAll:boolean retainAll:boolean toArray:Object[] iterator:Iterator<0> "
     "stream:Stream<0> poll:0 peek:0 element:0 remove:?"},
    {"Random", "java.util", "Serializable", "", "nextInt:int nextLong:long nextDouble:double nextBoolean:boolean nextFloat:float"},
    {"RandomAccess", "java.util", "", "", ""},
    {"ReadWriteLock", "java.util.concurrent.locks", "", "", "readLock:Lock writeLock:Lock"},
    {"Readable", "java.lang", "", "1r", ""},
    {"Reader", "java.io", "Closeable Readable", "", "read:int"},
    {"Record", "java.lang", "", "", ""},
    {"ReentrantLock", "java.util.concurrent.locks", "Lock Serializable", "", ""},
    {"ReentrantReadWriteLock", "java.util.concurrent.locks", "ReadWriteLock Serializable", "", ""},
    {"ReflectiveOperationException", "java.lang", "Exception", "", ""},
    {"Runnable", "java.lang", "", "0v", ""},
    {"Runtime", "java.lang", "", "", ""},
    {"RuntimeException", "java.lang", "Exception", "", ""},
    {"SafeVarargs", "java.lang", "", "", ""},
    {"Scanner", "java.util", "Iterator Closeable", "", "nextLine:String nextInt:int"},
    {"ScheduledExecutorService", "java.util.concurrent", "ExecutorService", "", ""},
    {"SecurityException", "java.lang", "RuntimeException", "", ""},
    {"SecurityManager", "java.lang", "", "", ""},
    {"Serializable", "java.io", "", "", ""},
    {"Set", "java.util", "Collection", "", "size:int isEmpty:boolean contains:boolean add:boolean remove:boolean addAll:boolean "
     "containsAll:boolean removeAll:boolean retainAll:boolean toArray:Object[] "
     "iterator:Iterator<0> stream:Stream<0>"},
    {"Short", "java.lang", "Number Comparable Serializable", "", "intValue:int longValue:long doubleValue:double floatValue:float shortValue:short "
     "byteValue:byte valueOf:Short compare:int compareTo:int toString:String "
     "toHexString:String hashCode:int max:short min:short signum:int bitCount:int "
     "MAX_VALUE.:short MIN_VALUE.:short parseShort:short"},
    {"SimpleDateFormat", "java.text", "DateFormat", "", "format:String parse:Date toPattern:String *.:int"},
    {"SortedMap", "java.util", "Map", "", "get:1 put:1 remove:1 getOrDefault:1 putIfAbsent:1 computeIfAbsent:1 size:int "
     "isEmpty:boolean containsKey:boolean containsValue:boolean keySet:Set<0> "
     "values:Collection<1> entrySet:Set<Map.Entry<0,1>> firstKey:0 lastKey:0"},
    {"SortedSet", "java.util", "Set", "", "size:int isEmpty:boolean contains:boolean add:boolean remove:boolean addAll:boolean "
     "containsAll:boolean removeAll:boolean retainAll:boolean toArray:Object[] "
     "iterator:Iterator<0> stream:Stream<0> first:0 last:0"},
    {"Spliterator", "java.util", "", "", ""},
    {"Stack", "java.util", "Vector", "", "size:int isEmpty:boolean contains:boolean add:boolean addAll:boolean containsAll:boolean "
     "removeAll:boolean retainAll:boolean toArray:Object[] iterator:Iterator<0> "
     "stream:Stream<0> get:0 set:0 indexOf:int lastIndexOf:int subList:List<0> "
     "listIterator:ListIterator<0> pop:0 peek:0 push:0 remove:?"},
    {"StackOverflowError", "java.lang", "VirtualMachineError", "", ""},
    {"StackTraceElement", "java.lang", "", "", ""},
    {"StackWalker", "java.lang", "", "", ""},
    {"StampedLock", "java.util.concurrent.locks", "Serializable", "", ""},
    {"StandardCharsets", "java.nio.charset", "", "", "UTF_8.:Charset US_ASCII.:Charset ISO_8859_1.:Charset UTF_16.:Charset *.:Charset"},
    {"Stream", "java.util.stream", "BaseStream", "", "filter:Stream<0> sorted:Stream<0> distinct:Stream<0> limit:Stream<0> skip:Stream<0> "
     "peek:Stream<0> findFirst:Optional<0> findAny:Optional<0> anyMatch:boolean "
     "allMatch:boolean noneMatch:boolean count:long toList:List<0> iterator:Iterator<0> "
     "mapToInt:IntStream min:Optional<0> max:Optional<0> parallel:Stream<0> "
     "sequential:Stream<0>"},
    {"StrictMath", "java.lang", "", "", ""},
    {"String", "java.lang", "CharSequence Comparable Serializable", "", "length:int charAt:char substring:String trim:String strip:String toLowerCase:String "
     "toUpperCase:String equals:boolean equalsIgnoreCase:boolean isEmpty:boolean "
     "isBlank:boolean indexOf:int lastIndexOf:int startsWith:boolean endsWith:boolean "
     "contains:boolean concat:String replace:String replaceAll:String replaceFirst:String "
     "split:String[] toCharArray:char[] getBytes:byte[] valueOf:String format:String "
     "formatted:String join:String compareTo:int compareToIgnoreCase:int matches:boolean "
     "intern:String codePointAt:int codePointCount:int offsetByCodePoints:int "
     "regionMatches:boolean subSequence:CharSequence repeat:String contentEquals:boolean "
     "hashCode:int toString:String copyValueOf:String stripLeading:String stripTrailing:String "
     "chars:IntStream lines:Stream<String>"},
    {"StringBuffer", "java.lang", "CharSequence Appendable Comparable Serializable", "", "append:StringBuffer insert:StringBuffer reverse:StringBuffer delete:StringBuffer "
     "deleteCharAt:StringBuffer replace:StringBuffer length:int charAt:char toString:String "
     "indexOf:int lastIndexOf:int capacity:int substring:String setLength:void setCharAt:void "
     "appendCodePoint:StringBuffer subSequence:CharSequence"},
    {"StringBuilder", "java.lang", "CharSequence Appendable Comparable Serializable", "", "append:StringBuilder insert:StringBuilder reverse:StringBuilder delete:StringBuilder "
     "deleteCharAt:StringBuilder replace:StringBuilder length:int charAt:char toString:String "
     "indexOf:int lastIndexOf:int capacity:int substring:String setLength:void setCharAt:void "
     "appendCodePoint:StringBuilder subSequence:CharSequence"},
    {"StringIndexOutOfBoundsException", "java.lang", "IndexOutOfBoundsException", "", ""},
    {"StringReader", "java.io", "Reader", "", ""},
    {"StringTokenizer", "java.util", "", "", "nextToken:String hasMoreTokens:boolean"},
    {"StringWriter", "java.io", "Writer", "", "toString:String getBuffer:StringBuffer"},
    {"Supplier", "java.util.function", "", "0r", "get:0"},
    {"SuppressWarnings", "java.lang", "", "", ""},
    {"System", "java.lang", "", "", "currentTimeMillis:long nanoTime:long identityHashCode:int getProperty:String "
     "getenv:String lineSeparator:String out.:PrintStream err.:PrintStream in.:InputStream"},
    {"Temporal", "java.time.temporal", "TemporalAccessor", "", ""},
    {"TemporalAccessor", "java.time.temporal", "", "", ""},
    {"Thread", "java.lang", "Runnable", "", "currentThread:Thread getName:String getId:long getThreadGroup:ThreadGroup "
     "isAlive:boolean isInterrupted:boolean getContextClassLoader:ClassLoader "
     "getStackTrace:StackTraceElement[]"},
    {"ThreadDeath", "java.lang", "Error", "", ""},
    {"ThreadFactory", "java.util.concurrent", "", "1r", "newThread:Thread"},
    {"ThreadGroup", "java.lang", "", "", ""},
    {"ThreadLocal", "java.lang", "", "", "get:0"},
    {"Throwable", "java.lang", "Serializable", "", "getMessage:String getCause:Throwable getLocalizedMessage:String "
     "getStackTrace:StackTraceElement[] getSuppressed:Throwable[] toString:String "
     "initCause:Throwable fillInStackTrace:Throwable"},
    {"TimeUnit", "java.util.concurrent", "Enum", "", "toMillis:long toSeconds:long toNanos:long toMicros:long convert:long *.:TimeUnit"},
    {"TimeZone", "java.util", "Serializable Cloneable", "", "getID:String getTimeZone:TimeZone getDefault:TimeZone getRawOffset:int "
     "getDisplayName:String getOffset:int *.:int"},
    {"TimeoutException", "java.util.concurrent", "Exception", "", ""},
    {"ToDoubleBiFunction", "java.util.function", "", "2r", "applyAsDouble:double"},
    {"ToDoubleFunction", "java.util.function", "", "1r", "applyAsDouble:double"},
    {"ToIntBiFunction", "java.util.function", "", "2r", "applyAsInt:int"},
    {"ToIntFunction", "java.util.function", "", "1r", "applyAsInt:int"},
    {"ToLongBiFunction", "java.util.function", "", "2r", "applyAsLong:long"},
    {"ToLongFunction", "java.util.function", "", "1r", "applyAsLong:long"},
    {"TreeMap", "java.util", "NavigableMap Cloneable Serializable", "", "get:1 put:1 remove:1 getOrDefault:1 putIfAbsent:1 computeIfAbsent:1 size:int "
     "isEmpty:boolean containsKey:boolean containsValue:boolean keySet:Set<0> "
     "values:Collection<1> entrySet:Set<Map.Entry<0,1>> firstKey:0 lastKey:0 "
     "firstEntry:Map.Entry<0,1> lastEntry:Map.Entry<0,1>"},
    {"TreeSet", "java.util", "NavigableSet Cloneable Serializable", "", "size:int isEmpty:boolean contains:boolean add:boolean remove:boolean addAll:boolean "
     "containsAll:boolean removeAll:boolean retainAll:boolean toArray:Object[] "
     "iterator:Iterator<0> stream:Stream<0> first:0 last:0"},
    {"Type", "java.lang.reflect", "", "", "getTypeName:String"},
    {"TypeNotPresentException", "java.lang", "RuntimeException", "", ""},
    {"TypeVariable", "java.lang.reflect", "Type AnnotatedElement", "", "getName:String getBounds:Type[] getGenericDeclaration:0"},
    {"URI", "java.net", "Comparable Serializable", "", "toString:String getPath:String getHost:String getScheme:String toURL:URL create:URI"},
    {"URL", "java.net", "Serializable", "", "toString:String getPath:String getHost:String openStream:InputStream getProtocol:String "
     "getFile:String toExternalForm:String"},
    {"URLClassLoader", "java.net", "ClassLoader Closeable", "", ""},
    {"UUID", "java.util", "Serializable Comparable", "", "toString:String getMostSignificantBits:long getLeastSignificantBits:long randomUUID:UUID "
     "fromString:UUID"},
    {"UnaryOperator", "java.util.function", "Function", "1r", "apply:0"},
    {"UncheckedIOException", "java.io", "RuntimeException", "", ""},
    {"UnsatisfiedLinkError", "java.lang", "LinkageError", "", ""},
    {"UnsupportedEncodingException", "java.io", "IOException", "", ""},
    {"UnsupportedOperationException", "java.lang", "RuntimeException", "", ""},
    {"Vector", "java.util", "List RandomAccess Cloneable Serializable", "", "size:int isEmpty:boolean contains:boolean add:boolean addAll:boolean containsAll:boolean "
     "removeAll:boolean retainAll:boolean toArray:Object[] iterator:Iterator<0> "
     "stream:Stream<0> get:0 set:0 indexOf:int lastIndexOf:int subList:List<0> "
     "listIterator:ListIterator<0> elementAt:0 remove:?"},
    {"VerifyError", "java.lang", "LinkageError", "", ""},
    {"VirtualMachineError", "java.lang", "Error", "", ""},
    {"Void", "java.lang", "", "", ""},
    {"WeakHashMap", "java.util", "Map", "", "get:1 put:1 remove:1 getOrDefault:1 putIfAbsent:1 computeIfAbsent:1 size:int "
     "isEmpty:boolean containsKey:boolean containsValue:boolean keySet:Set<0> "
     "values:Collection<1> entrySet:Set<Map.Entry<0,1>>"},
    {"WildcardType", "java.lang.reflect", "Type", "", "getUpperBounds:Type[] getLowerBounds:Type[]"},
    {"Writer", "java.io", "Appendable Closeable Flushable", "", ""},
    {"ZoneId", "java.time", "Serializable", "", ""},
    {"ZonedDateTime", "java.time", "Comparable Serializable Temporal TemporalAccessor", "", ""},
});
// clang-format on

}  // namespace

std::span<const LibraryType> library_types() { return TYPES; }

}  // namespace context_delta::indexer::java
